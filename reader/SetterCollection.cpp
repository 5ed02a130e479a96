#include "reader/SetterCollection.h"

#include <vector>

#include "model/Parameter.h"
#include "reader/AudioOptimizerValueSetter.h"
#include "reader/DrcRowDataValueSetter.h"
#include "reader/GeqValueSetter.h"
#include "reader/IeqValueSetter.h"
#include "reader/MixMatrixValueSetter.h"
#include "reader/RegulatorTuningValueSetter.h"
#include "reader/RowDataValueSetter.h"
#include "reader/SimpleValueSetter.h"
#include "reader/TuningFileParser.h"
#include "reader/VirtualBassSubgainValueSetter.h"
#include "reader/VirtualBassValueSetter.h"

namespace korva {

namespace {

// The node table. Single-parameter elements are named after their parameter with "-" for "_",
// except three: virtual-bass-process-enable fills virtual_bass_enable, drc-metadata fills
// custom_drc_metadata and output-mode fills output_mix_matrix.
std::set<ValueSetter*> createAllValueSetters() {
    const std::vector<ValueSetter*> setters = {
        new SimpleValueSetter("calibration-boost", CALIBRATION_BOOST),
        new SimpleValueSetter("mi-dialog-enhancer-steering-enable",
                              MI_DIALOG_ENHANCER_STEERING_ENABLE),
        new SimpleValueSetter("dialog-enhancer-enable", DIALOG_ENHANCER_ENABLE),
        new SimpleValueSetter("dialog-enhancer-amount", DIALOG_ENHANCER_AMOUNT),
        new SimpleValueSetter("dialog-enhancer-ducking", DIALOG_ENHANCER_DUCKING),
        new SimpleValueSetter("mi-virtualizer-binaural-steering-enable",
                              MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE),
        new SimpleValueSetter("peak-value", PEAK_VALUE),
        new SimpleValueSetter("surround-decoder-enable", SURROUND_DECODER_ENABLE),
        new SimpleValueSetter("surround-boost", SURROUND_BOOST),
        new SimpleValueSetter("volmax-boost", VOLMAX_BOOST),
        new SimpleValueSetter("volume-leveler-enable", VOLUME_LEVELER_ENABLE),
        new SimpleValueSetter("volume-leveler-amount", VOLUME_LEVELER_AMOUNT),
        new SimpleValueSetter("volume-leveler-in-target", VOLUME_LEVELER_IN_TARGET),
        new SimpleValueSetter("volume-leveler-out-target", VOLUME_LEVELER_OUT_TARGET),
        new SimpleValueSetter("graphic-equalizer-enable", GRAPHIC_EQUALIZER_ENABLE),
        new SimpleValueSetter("virtualizer-enable", VIRTUALIZER_ENABLE),
        new SimpleValueSetter("virtualizer-start-band", VIRTUALIZER_START_BAND),
        new SimpleValueSetter("bass-enhancer-enable", BASS_ENHANCER_ENABLE),
        new SimpleValueSetter("virtual-bass-process-enable", VIRTUAL_BASS_ENABLE),
        new SimpleValueSetter("headphone-virtualizer-steerer-source-distance",
                              HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE),
        new SimpleValueSetter("hearing-protection-enable", HEARING_PROTECTION_ENABLE),
        new SimpleValueSetter("hearing-protection-rms-averaging-time-win-len",
                              HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN),
        new SimpleValueSetter("hearing-protection-rms-attenuation-target",
                              HEARING_PROTECTION_RMS_ATTENUATION_TARGET),
        new SimpleValueSetter("hearing-protection-attenuation-attack-time",
                              HEARING_PROTECTION_ATTENUATION_ATTACK_TIME),
        new SimpleValueSetter("hearing-protection-attenuation-release-time",
                              HEARING_PROTECTION_ATTENUATION_RELEASE_TIME),
        new SimpleValueSetter("ieq-enable", IEQ_ENABLE),
        new SimpleValueSetter("ieq-amount", IEQ_AMOUNT),
        new SimpleValueSetter("headphone-virtualizer-mode", HEADPHONE_VIRTUALIZER_MODE),
        new RowDataValueSetter("advanced-headphone-virtualizer-rendering-config",
                               ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG),
        new SimpleValueSetter("mi-dv-leveler-steering-enable", MI_DV_LEVELER_STEERING_ENABLE),
        new SimpleValueSetter("mi-ieq-steering-enable", MI_IEQ_STEERING_ENABLE),
        new SimpleValueSetter("mi-surround-compressor-steering-enable",
                              MI_SURROUND_COMPRESSOR_STEERING_ENABLE),
        new SimpleValueSetter("mi-adaptive-virtualizer-steering-enable",
                              MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE),
        new SimpleValueSetter("reverb-suppression-enable", REVERB_SUPPRESSION_ENABLE),
        new SimpleValueSetter("reverb-suppression-amount", REVERB_SUPPRESSION_AMOUNT),
        new SimpleValueSetter("volume-modeler-enable", VOLUME_MODELER_ENABLE),
        new SimpleValueSetter("surround-decoder-diffuse-relocating-to-front-amount",
                              SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT),
        new SimpleValueSetter("advanced-headphone-virtualizer-lr-angle",
                              ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE),
        new DrcRowDataValueSetter("drc-metadata", CUSTOM_DRC_METADATA),
        new SimpleValueSetter("speaker-virtualizer-mode", SPEAKER_VIRTUALIZER_MODE),
        new SimpleValueSetter("advanced-speaker-virtualizer-start-bin",
                              ADVANCED_SPEAKER_VIRTUALIZER_START_BIN),
        new RowDataValueSetter("advanced-speaker-virtualizer-rendering-config",
                               ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG),
        new SimpleValueSetter("bass-enhancer-boost", BASS_ENHANCER_BOOST),
        new SimpleValueSetter("bass-enhancer-cutoff-frequency", BASS_ENHANCER_CUTOFF_FREQUENCY),
        new SimpleValueSetter("bass-enhancer-width", BASS_ENHANCER_WIDTH),
        new SimpleValueSetter("bass-extraction-cutoff-frequency", BASS_EXTRACTION_CUTOFF_FREQUENCY),
        new SimpleValueSetter("height-filter-mode", HEIGHT_FILTER_MODE),
        new SimpleValueSetter("regulator-overdrive", REGULATOR_OVERDRIVE),
        new SimpleValueSetter("regulator-timbre-preservation", REGULATOR_TIMBRE_PRESERVATION),
        new RowDataValueSetter("regulator-stress-amount", REGULATOR_STRESS_AMOUNT),
        new SimpleValueSetter("regulator-distortion-slope", REGULATOR_DISTORTION_SLOPE),
        new RowDataValueSetter("virtual-bass-harmgains", VIRTUAL_BASS_HARMGAINS),
        new RowDataValueSetter("virtual-bass-hybgains", VIRTUAL_BASS_HYBGAINS),
        new SimpleValueSetter("virtual-bass-rolloff-gain", VIRTUAL_BASS_ROLLOFF_GAIN),
        new SimpleValueSetter("virtual-bass-blend-linear-gain", VIRTUAL_BASS_BLEND_LINEAR_GAIN),
        new RowDataValueSetter("virtual-bass-blend-linear-gain-separated",
                               VIRTUAL_BASS_BLEND_LINEAR_GAIN_SEPARATED),
        new RowDataValueSetter("virtual-bass-mix-frequency", VIRTUAL_BASS_MIX_FREQUENCY),
        new RowDataValueSetter("virtual-bass-compressor-tuning", VIRTUAL_BASS_COMPRESSOR_TUNING),
        new SimpleValueSetter("virtual-bass-overall-gain", VIRTUAL_BASS_OVERALL_GAIN),
        new SimpleValueSetter("virtual-bass-slope-gain", VIRTUAL_BASS_SLOPE_GAIN),
        new VirtualBassValueSetter("virtual-bass-mix-freqs",
                                   {VIRTUAL_BASS_MIX_FREQ_LOW, VIRTUAL_BASS_MIX_FREQ_HIGH}),
        new VirtualBassValueSetter("virtual-bass-src-freqs",
                                   {VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH}),
        new VirtualBassSubgainValueSetter("virtual-bass-subgains", VIRTUAL_BASS_SUBGAINS),
        new SimpleValueSetter("virtualizer-front-speaker-angle", VIRTUALIZER_FRONT_SPEAKER_ANGLE),
        new SimpleValueSetter("virtualizer-height-speaker-angle", VIRTUALIZER_HEIGHT_SPEAKER_ANGLE),
        new SimpleValueSetter("virtualizer-rear-height-speaker-angle",
                              VIRTUALIZER_REAR_HEIGHT_SPEAKER_ANGLE),
        new SimpleValueSetter("virtualizer-surround-speaker-angle",
                              VIRTUALIZER_SURROUND_SPEAKER_ANGLE),
        new SimpleValueSetter("virtualizer-rear-surround-speaker-angle",
                              VIRTUALIZER_REAR_SURROUND_SPEAKER_ANGLE),
        new SimpleValueSetter("volume-leveler-compressor-enable", VOLUME_LEVELER_COMPRESSOR_ENABLE),
        new SimpleValueSetter("volume-modeler-calibration", VOLUME_MODELER_CALIBRATION),
        new SimpleValueSetter("audio-optimizer-enable", AUDIO_OPTIMIZER_ENABLE),
        new SimpleValueSetter("bass-extraction-enable", BASS_EXTRACTION_ENABLE),
        new SimpleValueSetter("regulator-enable", REGULATOR_ENABLE),
        new SimpleValueSetter("regulator-speaker-dist-enable", REGULATOR_SPEAKER_DIST_ENABLE),
        new MixMatrixValueSetter("output-mode", OUTPUT_MIX_MATRIX),
        new SimpleValueSetter("virtual-bass-mode", VIRTUAL_BASS_MODE),
        new SimpleValueSetter("complex-equalizer-enable", COMPLEX_EQUALIZER_ENABLE),
        new RowDataValueSetter("complex-equalizer-tuning-left", COMPLEX_EQUALIZER_TUNING_LEFT),
        new RowDataValueSetter("complex-equalizer-tuning-right", COMPLEX_EQUALIZER_TUNING_RIGHT),
        new RowDataValueSetter("complex-equalizer-tuning-left-surround",
                               COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND),
        new RowDataValueSetter("complex-equalizer-tuning-right-surround",
                               COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND),
        new SimpleValueSetter("regulator-sibilance-suppress-enable",
                              REGULATOR_SIBILANCE_SUPPRESS_ENABLE),
        new SimpleValueSetter("bass-mbdrc-enable", BASS_MBDRC_ENABLE),
        new RowDataValueSetter("regulator-sibilance-suppress-amounts-left",
                               REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT),
        new RowDataValueSetter("regulator-sibilance-suppress-amounts-right",
                               REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT),
        new RowDataValueSetter("regulator-sibilance-suppress-amounts-left-surround",
                               REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND),
        new RowDataValueSetter("regulator-sibilance-suppress-amounts-right-surround",
                               REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND),
        new RowDataValueSetter("bass-mbdrc-tuning", BASS_MBDRC_TUNING),
        new AudioOptimizerValueSetter(
            "audio-optimizer-bands",
            {AUDIO_OPTIMIZER_FREQUENCY, AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_R,
             AUDIO_OPTIMIZER_GAIN_LS, AUDIO_OPTIMIZER_GAIN_RS}),
        new RegulatorTuningValueSetter("regulator-tuning",
                                       {REGULATOR_FREQUENCY, REGULATOR_THRESHOLD_LOW,
                                        REGULATOR_THRESHOLD_HIGH, REGULATOR_ISOLATED_BAND}),
        new IeqValueSetter("ieq", {IEQ_FREQUENCY, IEQ_TARGET}),
        new GeqValueSetter("geq", {GEQ_FREQUENCY, GEQ_GAIN}),
        new SimpleValueSetter("high-pass-filter-enable", HIGH_PASS_FILTER_ENABLE),
        new SimpleValueSetter("high-pass-filter-cutoff-frequency-index",
                              HIGH_PASS_FILTER_CUTOFF_FREQUENCY_INDEX),
        new SimpleValueSetter("dynamic-speaker-optimization-amount",
                              DYNAMIC_SPEAKER_OPTIMIZATION_AMOUNT),
        new RowDataValueSetter("dynamic-speaker-optimization-speaker-interval",
                               DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL),
    };
    return std::set<ValueSetter*>(setters.begin(), setters.end());
}

}  // namespace

// The setters, their set and the parser's collection are defined in this one file so that they
// are built in this order at start-up.
const std::set<ValueSetter*> SetterCollection::kAllValueSetters = createAllValueSetters();

SetterCollection* TuningFileParser::sSetterCollection = new SetterCollection();

SetterCollection::SetterCollection() {
    for (ValueSetter* setter : kAllValueSetters) {
        mSetters.emplace(setter->getNodeName(), setter);
    }
    mByName.reserve(mSetters.size());
    for (const auto& [name, setter] : mSetters) {
        mByName.emplace(name, setter);
    }
}

SetterCollection::~SetterCollection() = default;

ValueSetter* SetterCollection::getValueSetter(std::string& name) {
    return getValueSetter(static_cast<const std::string&>(name));
}

ValueSetter* SetterCollection::getValueSetter(const std::string& name) const {
    // Unknown names are not remembered: a file full of foreign elements must not grow the
    // process-wide table, and lookups stay safe from several parsers at once.
    return findValueSetter(name);
}

ValueSetter* SetterCollection::findValueSetter(std::string_view name) const {
    auto it = mByName.find(name);
    return it != mByName.end() ? it->second : nullptr;
}

}  // namespace korva
