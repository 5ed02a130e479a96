#!/usr/bin/env bash
# The effect loads this library against headers it was built with: every exported class and
# table must be visible under namespace korva, and the host-only stand-ins (property service,
# engine replacement) must stay outside it.
set -u
lib=$1
symbols=$(nm -DC --defined-only "$lib") || { echo "nm failed on $lib"; exit 1; }
fail=0

require() {
    if ! grep -qF -- "$1" <<<"$symbols"; then
        echo "missing export: $1"
        fail=1
    fi
}
forbid() {
    if grep -qF -- "$1" <<<"$symbols"; then
        echo "unexpected export: $1"
        fail=1
    fi
}

for table in mCommonParams mDynamicProfileParams mMovieProfileParams mMusicProfileParams \
             mCustomProfileParams mCinemaProfileParams; do
    require "korva::SpatializerParamArray::$table"
done
require "android::Singleton<korva::SpatializerParamArray>::sInstance"
require "android::Singleton<korva::SpatializerParamArray>::sLock"
require "korva::SpatializerParamArray::getProfileParams(korva::KrvSpatializerProfileId, void*)"
require "korva::SpatializerParamArray::getProfileParamsSize(korva::KrvSpatializerProfileId)"
require "korva::SpatializerParamArray::getXMLProfileParams(int)"
require "korva::SpatializerParamArray::getXMLTuningParams(std::__cxx11::basic_string"
require "korva::SpatializerParamArray::setSelectedTuningDevice(int, std::__cxx11::basic_string"
require "korva::SpatializerParamArray::getProfileGeqGains(korva::KrvSpatializerProfileId)"
require "korva::SpatializerParamCache::setKorvaContentProfile(korva::KrvSpatializerProfileId, korva::IEffectKrv*)"
require "korva::SpatializerParamCache::updateContentProcEnabled(korva::IEffectKrv*, bool, bool)"
require "korva::SpatializerParamCache::loadTuningDevice(std::__cxx11::basic_string"
require "korva::SpatializerParamCache::setProfileGeqGains(std::vector<int, std::allocator<int> >&, korva::IEffectKrv*)"
require "korva::SpatializerParamParser::validate()"
require "korva::ParserBuffer::skip(int)"
require "korva::TagIterator::mInstanceCount"
require "korva::TuningFileParser::setTuningFile("
require "korva::TuningFileParser::sSetterCollection"
require "korva::SetterCollection::kAllValueSetters"
require "korva::ParameterValues::valuesToString"
require "korva::DeviceData::validateData()"
require "korva::Tuning::kValidParams"
require "korva::IeqPreset::IeqPreset(long long, int, std::__cxx11::basic_string"
require "korva::Tuning::Tuning(long, std::__cxx11::basic_string"
require "korva::ProfileEndpoint::ProfileEndpoint(long, int, korva::Endpoint, int)"
require "korva::SetParamCommand::execute(korva::VexEffect&)"
require "korva::VexEffect::sendSharedStore(void*, unsigned int)"
require "korva::ParameterTranslator::translateAll(korva::SetParamCommand&)"
require "korva::TranslatorCollection::kAllTranslators"

forbid "property_get"
forbid "VexParamStore::"
forbid "EffectParamParser::"

if [ "$fail" = 0 ]; then
    echo "exports ok"
fi
exit "$fail"
