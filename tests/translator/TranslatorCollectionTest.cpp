#include <gtest/gtest.h>

#include <map>
#include <new>
#include <typeindex>
#include <typeinfo>
#include <vector>

#include "TranslatorTestSupport.h"
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
#include "translator/TranslatorCollection.h"
#include "translator/VirtualBassEnableTranslator.h"
#include "translator/VirtualBassTranslator.h"

namespace korva {
namespace {

using test::entriesOf;
using test::Entry;
using test::TestRecord;

struct SimpleMapping {
    Parameter source;
    VexParameter target;
};

// The one-to-one translations, in the order the translators are created.
const SimpleMapping kSimpleMappings[] = {
    {GRAPHIC_EQUALIZER_ENABLE, GEON},
    {IEQ_ENABLE, IEON},
    {IEQ_AMOUNT, IEA},
    {IEQ_ID, IEID},
    {MI_DIALOG_ENHANCER_STEERING_ENABLE, MDEE},
    {MI_DV_LEVELER_STEERING_ENABLE, MDLE},
    {MI_IEQ_STEERING_ENABLE, MIEE},
    {MI_SURROUND_COMPRESSOR_STEERING_ENABLE, MSCE},
    {MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE, MAVE},
    {MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE, MVBE},
    {AUDIO_OPTIMIZER_ENABLE, AOON},
    {BASS_ENHANCER_ENABLE, BEON},
    {BASS_ENHANCER_BOOST, BEB},
    {BASS_ENHANCER_CUTOFF_FREQUENCY, BECF},
    {BASS_ENHANCER_WIDTH, BEW},
    {CALIBRATION_BOOST, PLB},
    {DIALOG_ENHANCER_ENABLE, DEON},
    {DIALOG_ENHANCER_DUCKING, DED},
    {REGULATOR_DISTORTION_SLOPE, ARDS},
    {REGULATOR_ENABLE, ARON},
    {REGULATOR_SPEAKER_DIST_ENABLE, ARDE},
    {REGULATOR_OVERDRIVE, AROD},
    {REGULATOR_TIMBRE_PRESERVATION, ARTP},
    {REGULATOR_SIBILANCE_SUPPRESS_ENABLE, RSSE},
    {SURROUND_DECODER_ENABLE, NGON},
    {SURROUND_BOOST, DSB},
    {VIRTUAL_BASS_OVERALL_GAIN, VBOG},
    {VIRTUAL_BASS_SLOPE_GAIN, VBSG},
    {VIRTUAL_BASS_SUBGAINS, VBHG},
    {VIRTUAL_BASS_BLEND_LINEAR_GAIN, VBBG},
    {VIRTUAL_BASS_COMPRESSOR_TUNING, VBCT},
    {VIRTUAL_BASS_HARMGAINS, VBHM},
    {VIRTUAL_BASS_HYBGAINS, VBHB},
    {VIRTUAL_BASS_MIX_FREQUENCY, VBMX},
    {VIRTUAL_BASS_ROLLOFF_GAIN, VBRG},
    {VOLMAX_BOOST, VMB},
    {VOLUME_LEVELER_AMOUNT, DVLA},
    {VOLUME_LEVELER_COMPRESSOR_ENABLE, DVLC},
    {VOLUME_LEVELER_ENABLE, DVLE},
    {VOLUME_LEVELER_IN_TARGET, DVLI},
    {VOLUME_LEVELER_OUT_TARGET, DVLO},
    {VOLUME_MODELER_ENABLE, DVME},
    {VOLUME_MODELER_CALIBRATION, DVMC},
    {HEIGHT_FILTER_MODE, DHFM},
    {VIRTUALIZER_FRONT_SPEAKER_ANGLE, DFSA},
    {VIRTUALIZER_SURROUND_SPEAKER_ANGLE, DSA},
    {VIRTUALIZER_HEIGHT_SPEAKER_ANGLE, DHSA},
    {VIRTUALIZER_REAR_SURROUND_SPEAKER_ANGLE, DRSA},
    {VIRTUALIZER_REAR_HEIGHT_SPEAKER_ANGLE, DRHA},
    {VIRTUALIZER_START_BAND, SVSB},
    {HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, VSSD},
    {COMPLEX_EQUALIZER_ENABLE, CEON},
    {PEAK_VALUE, DPLP},
    {HEARING_PROTECTION_ENABLE, HPON},
    {HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN, HPTW},
    {HEARING_PROTECTION_RMS_ATTENUATION_TARGET, HPAT},
    {HEARING_PROTECTION_ATTENUATION_ATTACK_TIME, HPAA},
    {HEARING_PROTECTION_ATTENUATION_RELEASE_TIME, HPAR},
    {BASS_MBDRC_ENABLE, BMDE},
    {REVERB_SUPPRESSION_AMOUNT, RVSA},
    {REVERB_SUPPRESSION_ENABLE, RVSE},
    {HEADPHONE_VIRTUALIZER_MODE, HVM},
    {ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG, HVRC},
    {ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE, HLRA},
    {SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT, SDFA},
    {SPEAKER_VIRTUALIZER_MODE, SVM},
    {ADVANCED_SPEAKER_VIRTUALIZER_START_BIN, AVSB},
    {ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG, SVRC},
};

struct CompositeSources {
    std::type_index type;
    std::vector<Parameter> sources;
};

const CompositeSources kCompositeSources[] = {
    {typeid(DeAmountTranslator), {DIALOG_ENHANCER_AMOUNT}},
    {typeid(AudioOptimizerTranslator),
     {AUDIO_OPTIMIZER_FREQUENCY, AUDIO_OPTIMIZER_GAIN_L, AUDIO_OPTIMIZER_GAIN_LS,
      AUDIO_OPTIMIZER_GAIN_R, AUDIO_OPTIMIZER_GAIN_RS}},
    {typeid(AudioRegulatorTranslator),
     {REGULATOR_STRESS_AMOUNT, REGULATOR_FREQUENCY, REGULATOR_ISOLATED_BAND,
      REGULATOR_THRESHOLD_HIGH, REGULATOR_THRESHOLD_LOW, REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT,
      REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND, REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT,
      REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND}},
    {typeid(GeqTranslator), {GEQ_FREQUENCY, GEQ_GAIN}},
    {typeid(IeqTranslator), {IEQ_FREQUENCY, IEQ_TARGET}},
    {typeid(OutputModeTranslator), {VIRTUALIZER_ENABLE, OUTPUT_MIX_MATRIX, ORIENTATION}},
    {typeid(VirtualBassEnableTranslator), {VIRTUAL_BASS_ENABLE, VIRTUAL_BASS_TYPE}},
    {typeid(VirtualBassTranslator),
     {VIRTUAL_BASS_SRC_FREQ_LOW, VIRTUAL_BASS_SRC_FREQ_HIGH, VIRTUAL_BASS_MIX_FREQ_LOW,
      VIRTUAL_BASS_MIX_FREQ_HIGH}},
    {typeid(ComplexEqualizerTranslator),
     {COMPLEX_EQUALIZER_TUNING_LEFT, COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND,
      COMPLEX_EQUALIZER_TUNING_RIGHT, COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND}},
    {typeid(CustomDRCTranslator), {CUSTOM_DRC_METADATA}},
    {typeid(BassMbdrcTranslator), {BASS_MBDRC_TUNING}},
    {typeid(BassImprovementTranslator),
     {VIRTUAL_BASS_BLEND_LINEAR_GAIN_SEPARATED, HIGH_PASS_FILTER_ENABLE,
      HIGH_PASS_FILTER_CUTOFF_FREQUENCY_INDEX}},
    {typeid(DynamicSpeakerOptimizationTranslator),
     {DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, DYNAMIC_SPEAKER_OPTIMIZATION_AMOUNT,
      DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL}},
};

const Parameter kUnmapped[] = {BASS_EXTRACTION_CUTOFF_FREQUENCY, BASS_EXTRACTION_ENABLE,
                               OUTPUT_CHANNELS, VIRTUAL_BASS_MODE};

TEST(TranslatorCollectionTest, EverySimpleMappingTranslatesItsSourceUnchanged) {
    TranslatorCollection* collection = ParameterTranslator::sTranslatorCollection;
    for (const SimpleMapping& mapping : kSimpleMappings) {
        SCOPED_TRACE(kParameterNames[mapping.source]);
        auto* simple = dynamic_cast<SimpleTranslator*>(collection->getTranslator(mapping.source));
        ASSERT_NE(nullptr, simple);
        EXPECT_EQ(mapping.target, simple->getTarget());
        EXPECT_EQ(std::vector<Parameter>{mapping.source}, simple->getSrcParams());

        TestRecord record({mapping.source}, {{mapping.source, {mapping.source, -1, 40000}}});
        SetParamCommand cmd(0x40000000);
        cmd.setDeviceId(0x80);
        simple->vexTranslate(cmd, record, ENDPOINT_HEADPHONE, true);
        EXPECT_EQ((std::vector<Entry>{{0x80, mapping.target, {mapping.source, -1, 40000}}}),
                  entriesOf(cmd));
        EXPECT_EQ(vexParameterCode(mapping.target), cmd.mBuffer[3]);
    }
}

TEST(TranslatorCollectionTest, EveryParameterMapsToItsTranslatorOrToNull) {
    TranslatorCollection* collection = ParameterTranslator::sTranslatorCollection;
    std::map<Parameter, int> covered;
    for (const SimpleMapping& mapping : kSimpleMappings) {
        covered[mapping.source]++;
    }
    for (const CompositeSources& composite : kCompositeSources) {
        Translator* first = collection->getTranslator(composite.sources[0]);
        ASSERT_NE(nullptr, first);
        EXPECT_EQ(composite.type, std::type_index(typeid(*first)));
        EXPECT_EQ(composite.sources, first->getSrcParams());
        for (Parameter source : composite.sources) {
            // One object serves all of a composite's sources.
            EXPECT_EQ(first, collection->getTranslator(source)) << kParameterNames[source];
            covered[source]++;
        }
    }
    for (Parameter unmapped : kUnmapped) {
        EXPECT_EQ(nullptr, collection->getTranslator(unmapped)) << kParameterNames[unmapped];
        covered[unmapped]++;
    }
    // The three tables together name each parameter exactly once.
    ASSERT_EQ(static_cast<size_t>(kNumParameters), covered.size());
    for (const auto& [parameter, times] : covered) {
        EXPECT_EQ(1, times) << kParameterNames[parameter];
    }
}

TEST(TranslatorCollectionTest, UnmappedLookupRecordsANullMapping) {
    TranslatorCollection collection;
    const size_t mapped = collection.getTranslators().size();
    EXPECT_EQ(static_cast<size_t>(kNumParameters) - 4, mapped);
    for (Parameter unmapped : kUnmapped) {
        EXPECT_EQ(0u, collection.getTranslators().count(unmapped));
        EXPECT_EQ(nullptr, collection.getTranslator(unmapped));
        auto it = collection.getTranslators().find(unmapped);
        ASSERT_NE(collection.getTranslators().end(), it) << kParameterNames[unmapped];
        EXPECT_EQ(nullptr, it->second);
    }
    EXPECT_EQ(static_cast<size_t>(kNumParameters), collection.getTranslators().size());
    // A mapped lookup adds nothing.
    EXPECT_NE(nullptr, collection.getTranslator(GEQ_GAIN));
    EXPECT_EQ(static_cast<size_t>(kNumParameters), collection.getTranslators().size());
}

TEST(TranslatorCollectionTest, AllTranslatorsAreHeldInCreationOrder) {
    const TranslatorSet& all = TranslatorCollection::kAllTranslators;
    ASSERT_EQ(81u, all.size());
    int simple = 0;
    int previous = -1;
    std::vector<Translator*> ordered(all.begin(), all.end());
    for (Translator* translator : ordered) {
        EXPECT_LT(previous, translator->getConstructionIndex());
        previous = translator->getConstructionIndex();
        simple += dynamic_cast<SimpleTranslator*>(translator) != nullptr ? 1 : 0;
    }
    EXPECT_EQ(68, simple);
    // The simple translators come in the table's order, which is the creation order.
    size_t next = 0;
    for (Translator* translator : ordered) {
        if (auto* s = dynamic_cast<SimpleTranslator*>(translator)) {
            ASSERT_LT(next, std::size(kSimpleMappings));
            EXPECT_EQ(kSimpleMappings[next].source, s->getSrcParams()[0]) << next;
            next++;
        }
    }
    EXPECT_EQ(typeid(DynamicSpeakerOptimizationTranslator), typeid(*ordered.back()));
    EXPECT_EQ(typeid(GeqTranslator), typeid(*ordered[1]));
}

TEST(TranslatorCollectionTest, TranslatorsOrderByConstructionNotAddress) {
    // The first translator is built at the higher address, so address order would invert them.
    alignas(SimpleTranslator) unsigned char slots[2][sizeof(SimpleTranslator)];
    auto* first = new (slots[1]) SimpleTranslator(VOL, PEAK_VALUE);
    auto* second = new (slots[0]) SimpleTranslator(VOL, PEAK_VALUE);
    ASSERT_LT(static_cast<void*>(second), static_cast<void*>(first));
    TranslatorSet ordered = {second, first};
    EXPECT_EQ(first, *ordered.begin());
    EXPECT_EQ(second, *ordered.rbegin());
    second->~SimpleTranslator();
    first->~SimpleTranslator();
}

}  // namespace
}  // namespace korva
