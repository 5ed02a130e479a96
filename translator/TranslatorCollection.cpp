#include "translator/TranslatorCollection.h"

#include "translator/AudioOptimizerTranslator.h"
#include "translator/AudioRegulatorTranslator.h"
#include "translator/BassImprovementTranslator.h"
#include "translator/BassMbdrcTranslator.h"
#include "translator/ComplexEqualizerTranslator.h"
#include "translator/CustomDRCTranslator.h"
#include "translator/DeAmountTranslator.h"
#include "translator/DynamicSpeakerOptimizationTranslator.h"
#include "translator/GeqTranslator.h"
#include "translator/IeqTranslator.h"
#include "translator/OutputModeTranslator.h"
#include "translator/ParameterTranslator.h"
#include "translator/SimpleTranslator.h"
#include "translator/VirtualBassEnableTranslator.h"
#include "translator/VirtualBassTranslator.h"

namespace korva {

// Everything built at static initialisation lives in this one translation unit, defined in the
// order it must be built: the composites' source lists, the translators, then the collection that
// reads the lists. Across translation units that order would be unspecified.

std::vector<Parameter> DeAmountTranslator::kSrcParams = {DIALOG_ENHANCER_AMOUNT};
std::vector<Parameter> AudioOptimizerTranslator::kSrcParams = {
    AUDIO_OPTIMIZER_FREQUENCY, AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_LS,
    AUDIO_OPTIMIZER_GAIN_R, AUDIO_OPTIMIZER_GAIN_RS};
std::vector<Parameter> AudioRegulatorTranslator::kSrcParams = {
    REGULATOR_STRESS_AMOUNT,
    REGULATOR_FREQUENCY,
    REGULATOR_ISOLATED_BAND,
    REGULATOR_THRESHOLD_HIGH,
    REGULATOR_THRESHOLD_LOW,
    REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT,
    REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND,
    REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT,
    REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND};
std::vector<Parameter> GeqTranslator::kSrcParams = {GEQ_FREQUENCY, GEQ_GAIN};
std::vector<Parameter> IeqTranslator::kSrcParams = {IEQ_FREQUENCY, IEQ_TARGET};
std::vector<Parameter> OutputModeTranslator::kSrcParams = {VIRTUALIZER_ENABLE, OUTPUT_MIX_MATRIX,
                                                           ORIENTATION};
std::vector<Parameter> VirtualBassEnableTranslator::kSrcParams = {VIRTUAL_BASS_ENABLE,
                                                                  VIRTUAL_BASS_TYPE};
std::vector<Parameter> VirtualBassTranslator::kSrcParams = {
    VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH, VIRTUAL_BASS_MIX_FREQ_LOW,
    VIRTUAL_BASS_MIX_FREQ_HIGH};
std::vector<Parameter> ComplexEqualizerTranslator::kSrcParams = {
    COMPLEX_EQUALIZER_TUNING_LEFT, COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND,
    COMPLEX_EQUALIZER_TUNING_RIGHT, COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND};
std::vector<Parameter> CustomDRCTranslator::kSrcParams = {CUSTOM_DRC_METADATA};
std::vector<Parameter> BassMbdrcTranslator::kSrcParams = {BASS_MBDRC_TUNING};
std::vector<Parameter> BassImprovementTranslator::kSrcParams = {
    VIRTUAL_BASS_BLEND_LINEAR_GAIN_SEPARATED, HIGH_PASS_FILTER_ENABLE,
    HIGH_PASS_FILTER_CUTOFF_FREQUENCY_INDEX};
std::vector<Parameter> DynamicSpeakerOptimizationTranslator::kSrcParams = {
    DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, DYNAMIC_SPEAKER_OPTIMIZATION_AMOUNT,
    DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL};

namespace {

Translator* simple(Parameter source, VexParameter target) {
    return new SimpleTranslator(target, source);
}

// The construction order below is the order of the entries in every blob.
TranslatorSet createAllTranslators() {
    // A braced list is evaluated left to right, so the translators are constructed in the order
    // written.
    return {
        simple(GRAPHIC_EQUALIZER_ENABLE, GEON),
        new GeqTranslator(),
        simple(IEQ_ENABLE, IEON),
        simple(IEQ_AMOUNT, IEA),
        simple(IEQ_ID, IEID),
        new IeqTranslator(),
        simple(MI_DIALOG_ENHANCER_STEERING_ENABLE, MDEE),
        simple(MI_DV_LEVELER_STEERING_ENABLE, MDLE),
        simple(MI_IEQ_STEERING_ENABLE, MIEE),
        simple(MI_SURROUND_COMPRESSOR_STEERING_ENABLE, MSCE),
        simple(MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE, MAVE),
        simple(MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE, MVBE),
        simple(AUDIO_OPTIMIZER_ENABLE, AOON),
        new AudioOptimizerTranslator(),
        simple(BASS_ENHANCER_ENABLE, BEON),
        simple(BASS_ENHANCER_BOOST, BEB),
        simple(BASS_ENHANCER_CUTOFF_FREQUENCY, BECF),
        simple(BASS_ENHANCER_WIDTH, BEW),
        simple(CALIBRATION_BOOST, PLB),
        new DeAmountTranslator(),
        simple(DIALOG_ENHANCER_ENABLE, DEON),
        simple(DIALOG_ENHANCER_DUCKING, DED),
        new AudioRegulatorTranslator(),
        simple(REGULATOR_DISTORTION_SLOPE, ARDS),
        simple(REGULATOR_ENABLE, ARON),
        simple(REGULATOR_SPEAKER_DIST_ENABLE, ARDE),
        simple(REGULATOR_OVERDRIVE, AROD),
        simple(REGULATOR_TIMBRE_PRESERVATION, ARTP),
        simple(REGULATOR_SIBILANCE_SUPPRESS_ENABLE, RSSE),
        simple(SURROUND_DECODER_ENABLE, NGON),
        simple(SURROUND_BOOST, DSB),
        new VirtualBassEnableTranslator(),
        new VirtualBassTranslator(),
        simple(VIRTUAL_BASS_OVERALL_GAIN, VBOG),
        simple(VIRTUAL_BASS_SLOPE_GAIN, VBSG),
        simple(VIRTUAL_BASS_SUBGAINS, VBHG),
        simple(VIRTUAL_BASS_BLEND_LINEAR_GAIN, VBBG),
        simple(VIRTUAL_BASS_COMPRESSOR_TUNING, VBCT),
        simple(VIRTUAL_BASS_HARMGAINS, VBHM),
        simple(VIRTUAL_BASS_HYBGAINS, VBHB),
        simple(VIRTUAL_BASS_MIX_FREQUENCY, VBMX),
        simple(VIRTUAL_BASS_ROLLOFF_GAIN, VBRG),
        simple(VOLMAX_BOOST, VMB),
        simple(VOLUME_LEVELER_AMOUNT, DVLA),
        simple(VOLUME_LEVELER_COMPRESSOR_ENABLE, DVLC),
        simple(VOLUME_LEVELER_ENABLE, DVLE),
        simple(VOLUME_LEVELER_IN_TARGET, DVLI),
        simple(VOLUME_LEVELER_OUT_TARGET, DVLO),
        simple(VOLUME_MODELER_ENABLE, DVME),
        simple(VOLUME_MODELER_CALIBRATION, DVMC),
        new OutputModeTranslator(),
        simple(HEIGHT_FILTER_MODE, DHFM),
        simple(VIRTUALIZER_FRONT_SPEAKER_ANGLE, DFSA),
        simple(VIRTUALIZER_SURROUND_SPEAKER_ANGLE, DSA),
        simple(VIRTUALIZER_HEIGHT_SPEAKER_ANGLE, DHSA),
        simple(VIRTUALIZER_REAR_SURROUND_SPEAKER_ANGLE, DRSA),
        simple(VIRTUALIZER_REAR_HEIGHT_SPEAKER_ANGLE, DRHA),
        simple(VIRTUALIZER_START_BAND, SVSB),
        simple(HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, VSSD),
        simple(COMPLEX_EQUALIZER_ENABLE, CEON),
        new ComplexEqualizerTranslator(),
        simple(PEAK_VALUE, DPLP),
        new CustomDRCTranslator(),
        simple(HEARING_PROTECTION_ENABLE, HPON),
        simple(HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN, HPTW),
        simple(HEARING_PROTECTION_RMS_ATTENUATION_TARGET, HPAT),
        simple(HEARING_PROTECTION_ATTENUATION_ATTACK_TIME, HPAA),
        simple(HEARING_PROTECTION_ATTENUATION_RELEASE_TIME, HPAR),
        simple(BASS_MBDRC_ENABLE, BMDE),
        new BassMbdrcTranslator(),
        simple(REVERB_SUPPRESSION_AMOUNT, RVSA),
        simple(REVERB_SUPPRESSION_ENABLE, RVSE),
        simple(HEADPHONE_VIRTUALIZER_MODE, HVM),
        simple(ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG, HVRC),
        simple(ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE, HLRA),
        simple(SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT, SDFA),
        simple(SPEAKER_VIRTUALIZER_MODE, SVM),
        simple(ADVANCED_SPEAKER_VIRTUALIZER_START_BIN, AVSB),
        simple(ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG, SVRC),
        new BassImprovementTranslator(),
        new DynamicSpeakerOptimizationTranslator(),
    };
}

}  // namespace

const TranslatorSet TranslatorCollection::kAllTranslators = createAllTranslators();

TranslatorCollection* ParameterTranslator::sTranslatorCollection = new TranslatorCollection();

TranslatorCollection::TranslatorCollection() {
    for (Translator* translator : kAllTranslators) {
        for (Parameter parameter : translator->getSrcParams()) {
            mTranslators.emplace(parameter, translator);
        }
    }
}

Translator* TranslatorCollection::getTranslator(Parameter parameter) {
    return mTranslators[parameter];
}

}  // namespace korva
