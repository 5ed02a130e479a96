#include "model/Tuning.h"

#include <sstream>
#include <utility>

namespace korva {

namespace {

const std::set<Parameter>& validParams() {
    static const std::set<Parameter> sValidParams = {
        ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG,
        ADVANCED_SPEAKER_VIRTUALIZER_START_BIN,
        AUDIO_OPTIMIZER_ENABLE,
        AUDIO_OPTIMIZER_FREQUENCY,
        AUDIO_OPTIMIZER_GAIN_L,
        AUDIO_OPTIMIZER_GAIN_LS,
        AUDIO_OPTIMIZER_GAIN_R,
        AUDIO_OPTIMIZER_GAIN_RS,
        BASS_ENHANCER_BOOST,
        BASS_ENHANCER_CUTOFF_FREQUENCY,
        BASS_ENHANCER_WIDTH,
        BASS_EXTRACTION_CUTOFF_FREQUENCY,
        BASS_EXTRACTION_ENABLE,
        BASS_MBDRC_ENABLE,
        BASS_MBDRC_TUNING,
        COMPLEX_EQUALIZER_ENABLE,
        COMPLEX_EQUALIZER_TUNING_LEFT,
        COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND,
        COMPLEX_EQUALIZER_TUNING_RIGHT,
        COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND,
        DYNAMIC_SPEAKER_OPTIMIZATION_AMOUNT,
        DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE,
        DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL,
        HEIGHT_FILTER_MODE,
        HIGH_PASS_FILTER_CUTOFF_FREQUENCY_INDEX,
        HIGH_PASS_FILTER_ENABLE,
        ORIENTATION,
        OUTPUT_CHANNELS,
        OUTPUT_MIX_MATRIX,
        REGULATOR_DISTORTION_SLOPE,
        REGULATOR_ENABLE,
        REGULATOR_FREQUENCY,
        REGULATOR_ISOLATED_BAND,
        REGULATOR_OVERDRIVE,
        REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT,
        REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND,
        REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT,
        REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND,
        REGULATOR_SIBILANCE_SUPPRESS_ENABLE,
        REGULATOR_SPEAKER_DIST_ENABLE,
        REGULATOR_STRESS_AMOUNT,
        REGULATOR_THRESHOLD_HIGH,
        REGULATOR_THRESHOLD_LOW,
        REGULATOR_TIMBRE_PRESERVATION,
        SPEAKER_VIRTUALIZER_MODE,
        VIRTUAL_BASS_BLEND_LINEAR_GAIN,
        VIRTUAL_BASS_BLEND_LINEAR_GAIN_SEPARATED,
        VIRTUAL_BASS_COMPRESSOR_TUNING,
        VIRTUAL_BASS_HARMGAINS,
        VIRTUAL_BASS_HYBGAINS,
        VIRTUAL_BASS_MIX_FREQUENCY,
        VIRTUAL_BASS_MIX_FREQ_HIGH,
        VIRTUAL_BASS_MIX_FREQ_LOW,
        VIRTUAL_BASS_MODE,
        VIRTUAL_BASS_OVERALL_GAIN,
        VIRTUAL_BASS_ROLLOFF_GAIN,
        VIRTUAL_BASS_SLOPE_GAIN,
        VIRTUAL_BASS_SRC_FREQ_HIGH,
        VIRTUAL_BASS_SRC_FREQ_LOW,
        VIRTUAL_BASS_SUBGAINS,
        VIRTUALIZER_FRONT_SPEAKER_ANGLE,
        VIRTUALIZER_HEIGHT_SPEAKER_ANGLE,
        VIRTUALIZER_REAR_HEIGHT_SPEAKER_ANGLE,
        VIRTUALIZER_REAR_SURROUND_SPEAKER_ANGLE,
        VIRTUALIZER_SURROUND_SPEAKER_ANGLE,
        VOLUME_LEVELER_COMPRESSOR_ENABLE,
        VOLUME_MODELER_CALIBRATION,
    };
    return sValidParams;
}

}  // namespace

const std::set<Parameter>& Tuning::kValidParams = validParams();

const std::map<std::string, Endpoint> Tuning::kEndpNameToEndpoint = {
    {"speaker", ENDPOINT_SPEAKER},
    {"headphone", ENDPOINT_HEADPHONE},
    {"other", ENDPOINT_OTHER},
};

Tuning::Tuning(std::string name, Endpoint endpoint, bool mono)
    : ParameterValues(-1, true),
      mName(std::move(name)),
      mEndpoint(endpoint),
      mMono(mono),
      mReadonly(true) {}

Tuning::Tuning(long id, std::string name, Endpoint endpoint, bool mono, bool readonly)
    : ParameterValues(id, false),
      mName(std::move(name)),
      mEndpoint(endpoint),
      mMono(mono),
      mReadonly(readonly) {}

Tuning::~Tuning() = default;

int64_t Tuning::getId() const {
    return id;
}

const std::set<Parameter>& Tuning::getValidParams() const {
    return validParams();
}

std::string Tuning::getName() const {
    return mName;
}

Endpoint Tuning::getEndpoint() const {
    return mEndpoint;
}

void Tuning::setEndpoint(std::string name) {
    auto it = kEndpNameToEndpoint.find(name);
    if (it != kEndpNameToEndpoint.end()) {
        mEndpoint = it->second;
    }
}

void Tuning::setMono(bool mono) {
    mMono = mono;
}

bool Tuning::isMono() const {
    return mMono;
}

bool Tuning::isReadonly() const {
    return mReadonly;
}

std::string Tuning::toString() const {
    std::ostringstream out;
    out << std::boolalpha << "id=" << id << "\n"
        << "name=" << mName << "\n"
        << "endpoint=" << kEndpointNames[mEndpoint] << "\n"
        << "mono=" << mMono << "\n"
        << "readonly=" << mReadonly << "\n"
        << valuesToString();
    return out.str();
}

}  // namespace korva
