#include "translator/ParameterTranslator.h"

#include <map>
#include <vector>

#include "model/LoadObserver.h"

namespace korva {

ParameterTranslator::ParameterTranslator()
    : mSource(nullptr), mEndpoint(ENDPOINT_SPEAKER), mMono(false) {}

ParameterTranslator::~ParameterTranslator() {}

void ParameterTranslator::setSource(ParameterValues* values, Endpoint endpoint, bool mono) {
    mSource = values;
    mEndpoint = endpoint;
    mMono = mono;
}

void ParameterTranslator::onParameterChanged(Parameter parameter) {
    Translator* translator = sTranslatorCollection->getTranslator(parameter);
    if (translator != nullptr) {
        mPending.insert(translator);
    }
}

void ParameterTranslator::translatePending(SetParamCommand& cmd) {
    LoadObserver* observer = LoadObserver::current();
    for (Translator* translator : mPending) {
        if (observer == nullptr) {
            translator->vexTranslate(cmd, *mSource, mEndpoint, mMono);
        } else {
            translateObserved(*translator, cmd, *observer);
        }
    }
    mPending.clear();
}

void ParameterTranslator::translateObserved(Translator& translator, SetParamCommand& cmd,
                                            LoadObserver& observer) {
    // What the translator changes in the record shows against a copy taken before it runs.
    const std::map<Parameter, std::vector<int>> before = mSource->values;
    const int first = cmd.mCount;
    translator.vexTranslate(cmd, *mSource, mEndpoint, mMono);
    for (const auto& [parameter, values] : mSource->values) {
        auto was = before.find(parameter);
        if (was == before.end()) {
            observer.onValue(nullptr, *mSource, parameter, values, ValueSource::kTranslatorEmpty);
        } else if (was->second != values) {
            observer.onValue(nullptr, *mSource, parameter, values, ValueSource::kTranslator);
        }
    }
    observer.onTranslated(translator, *mSource, cmd.mDeviceId, first, cmd.mCount);
}

void ParameterTranslator::translateAll(SetParamCommand& cmd) {
    for (Parameter parameter : mSource->getValidParams()) {
        onParameterChanged(parameter);
    }
    translatePending(cmd);
}

}  // namespace korva
