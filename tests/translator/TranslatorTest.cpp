// Which translator each tuning parameter reaches, and the order in which a record's translators
// write their entries.

#include <gtest/gtest.h>

#include <map>
#include <new>
#include <set>
#include <vector>

#include "TranslatorTestSupport.h"
#include "translator/ParameterTranslator.h"
#include "translator/SimpleTranslator.h"
#include "translator/TranslatorCollection.h"

namespace korva {
namespace {

using test::entriesOf;
using test::Entry;
using test::TestRecord;
using test::Values;

// The one-to-one translations.
// clang-format off
const std::pair<Parameter, VexParameter> kSimple[] = {
    {GRAPHIC_EQUALIZER_ENABLE, GEON}, {IEQ_ENABLE, IEON}, {IEQ_AMOUNT, IEA}, {IEQ_ID, IEID},
    {MI_DIALOG_ENHANCER_STEERING_ENABLE, MDEE}, {MI_DV_LEVELER_STEERING_ENABLE, MDLE},
    {MI_IEQ_STEERING_ENABLE, MIEE}, {MI_SURROUND_COMPRESSOR_STEERING_ENABLE, MSCE},
    {MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE, MAVE},
    {MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE, MVBE}, {AUDIO_OPTIMIZER_ENABLE, AOON},
    {BASS_ENHANCER_ENABLE, BEON}, {BASS_ENHANCER_BOOST, BEB},
    {BASS_ENHANCER_CUTOFF_FREQUENCY, BECF}, {BASS_ENHANCER_WIDTH, BEW}, {CALIBRATION_BOOST, PLB},
    {DIALOG_ENHANCER_ENABLE, DEON}, {DIALOG_ENHANCER_DUCKING, DED},
    {REGULATOR_DISTORTION_SLOPE, ARDS}, {REGULATOR_ENABLE, ARON},
    {REGULATOR_SPEAKER_DIST_ENABLE, ARDE}, {REGULATOR_OVERDRIVE, AROD},
    {REGULATOR_TIMBRE_PRESERVATION, ARTP}, {REGULATOR_SIBILANCE_SUPPRESS_ENABLE, RSSE},
    {SURROUND_DECODER_ENABLE, NGON}, {SURROUND_BOOST, DSB}, {VIRTUAL_BASS_OVERALL_GAIN, VBOG},
    {VIRTUAL_BASS_SLOPE_GAIN, VBSG}, {VIRTUAL_BASS_SUBGAINS, VBHG},
    {VIRTUAL_BASS_BLEND_LINEAR_GAIN, VBBG}, {VIRTUAL_BASS_COMPRESSOR_TUNING, VBCT},
    {VIRTUAL_BASS_HARMGAINS, VBHM}, {VIRTUAL_BASS_HYBGAINS, VBHB},
    {VIRTUAL_BASS_MIX_FREQUENCY, VBMX}, {VIRTUAL_BASS_ROLLOFF_GAIN, VBRG}, {VOLMAX_BOOST, VMB},
    {VOLUME_LEVELER_AMOUNT, DVLA}, {VOLUME_LEVELER_COMPRESSOR_ENABLE, DVLC},
    {VOLUME_LEVELER_ENABLE, DVLE}, {VOLUME_LEVELER_IN_TARGET, DVLI},
    {VOLUME_LEVELER_OUT_TARGET, DVLO}, {VOLUME_MODELER_ENABLE, DVME},
    {VOLUME_MODELER_CALIBRATION, DVMC}, {HEIGHT_FILTER_MODE, DHFM},
    {VIRTUALIZER_FRONT_SPEAKER_ANGLE, DFSA}, {VIRTUALIZER_SURROUND_SPEAKER_ANGLE, DSA},
    {VIRTUALIZER_HEIGHT_SPEAKER_ANGLE, DHSA}, {VIRTUALIZER_REAR_SURROUND_SPEAKER_ANGLE, DRSA},
    {VIRTUALIZER_REAR_HEIGHT_SPEAKER_ANGLE, DRHA}, {VIRTUALIZER_START_BAND, SVSB},
    {HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, VSSD}, {COMPLEX_EQUALIZER_ENABLE, CEON},
    {PEAK_VALUE, DPLP}, {HEARING_PROTECTION_ENABLE, HPON},
    {HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN, HPTW},
    {HEARING_PROTECTION_RMS_ATTENUATION_TARGET, HPAT},
    {HEARING_PROTECTION_ATTENUATION_ATTACK_TIME, HPAA},
    {HEARING_PROTECTION_ATTENUATION_RELEASE_TIME, HPAR}, {BASS_MBDRC_ENABLE, BMDE},
    {REVERB_SUPPRESSION_AMOUNT, RVSA}, {REVERB_SUPPRESSION_ENABLE, RVSE},
    {HEADPHONE_VIRTUALIZER_MODE, HVM}, {ADVANCED_HEADPHONE_VIRTUALIZER_RENDERING_CONFIG, HVRC},
    {ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE, HLRA},
    {SURROUND_DECODER_DIFFUSE_RELOCATING_TO_FRONT_AMOUNT, SDFA}, {SPEAKER_VIRTUALIZER_MODE, SVM},
    {ADVANCED_SPEAKER_VIRTUALIZER_START_BIN, AVSB},
    {ADVANCED_SPEAKER_VIRTUALIZER_RENDERING_CONFIG, SVRC}};
// clang-format on

TEST(TranslatorCollectionTest, ParametersWithoutTranslatorLeaveANullMapping) {
    TranslatorCollection collection;
    const size_t mapped = collection.getTranslators().size();
    EXPECT_EQ(static_cast<size_t>(kNumParameters) - 4, mapped);
    for (Parameter p : {BASS_EXTRACTION_CUTOFF_FREQUENCY, BASS_EXTRACTION_ENABLE, OUTPUT_CHANNELS,
                        VIRTUAL_BASS_MODE}) {
        EXPECT_EQ(nullptr, collection.getTranslator(p)) << kParameterNames[p];
        EXPECT_EQ(1u, collection.getTranslators().count(p)) << kParameterNames[p];
    }
    EXPECT_EQ(static_cast<size_t>(kNumParameters), collection.getTranslators().size());
    // One translator serves all the sources of a composite.
    EXPECT_EQ(collection.getTranslator(GEQ_FREQUENCY), collection.getTranslator(GEQ_GAIN));
}

// Blob entry order must not depend on where the heap put the translators.
TEST(TranslatorCollectionTest, TranslatorsOrderByConstructionNotAddress) {
    alignas(SimpleTranslator) unsigned char slots[2][sizeof(SimpleTranslator)];
    auto* first = new (slots[1]) SimpleTranslator(VOL, PEAK_VALUE);
    auto* second = new (slots[0]) SimpleTranslator(VOL, PEAK_VALUE);
    TranslatorSet ordered = {second, first};
    EXPECT_EQ(first, *ordered.begin());
    second->~SimpleTranslator();
    first->~SimpleTranslator();
}

// Values that make every translator write every entry it can.
Values everyParameterSet() {
    Values values;
    for (int p = 0; p < kNumParameters; p++) values[static_cast<Parameter>(p)] = {p + 1};
    values[OUTPUT_CHANNELS] = {2};
    for (Parameter on : {VIRTUAL_BASS_ENABLE, COMPLEX_EQUALIZER_ENABLE, BASS_MBDRC_ENABLE,
                         REGULATOR_SIBILANCE_SUPPRESS_ENABLE}) {
        values[on] = {1};
    }
    values[DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE] = {1};
    return values;
}

TEST(ParameterTranslatorTest, EntriesComeInTranslatorCreationOrderWhateverTheChangeOrder) {
    const std::vector<VexParameter> kOrder = {
        GEON, GEBS, IEON, IEA,  IEID, IEBS, MDEE, MDLE, MIEE, MSCE, MAVE, MVBE, AOON, AOBS, BEON,
        BEB,  BECF, BEW,  PLB,  DEA,  DEON, DED,  ARSA, ARBS, RSSA, ARDS, ARON, ARDE, AROD, ARTP,
        RSSE, NGON, DSB,  VBM,  VBON, VBSF, VBMF, VBOG, VBSG, VBHG, VBBG, VBCT, VBHM, VBHB, VBMX,
        VBRG, VMB,  DVLA, DVLC, DVLE, DVLI, DVLO, DVME, DVMC, DOM,  DHFM, DFSA, DSA,  DHSA, DRSA,
        DRHA, SVSB, VSSD, CEON, CEQT, DPLP, DRCM, HPON, HPTW, HPAT, HPAA, HPAR, BMDE, BMDT, RVSA,
        RVSE, HVM,  HVRC, HLRA, SDFA, SVM,  AVSB, SVRC, VBCG, HFON, HFCF, DSOA, DSOI, DSOE};
    // Every source holds a value of its own, so the entries of the translators that only pass
    // lists on show which sources they read.
    const Values in = everyParameterSet();
    auto v = [&in](Parameter p) { return in.at(p)[0]; };
    std::map<VexParameter, std::vector<int>> passed = {
        {IEBS, {1, v(IEQ_FREQUENCY), v(IEQ_TARGET)}},
        {DRCM, {v(CUSTOM_DRC_METADATA)}},
        {VBCG, {v(VIRTUAL_BASS_BLEND_LINEAR_GAIN_SEPARATED)}},
        {HFON, {v(HIGH_PASS_FILTER_ENABLE)}},
        {HFCF, {v(HIGH_PASS_FILTER_CUTOFF_FREQUENCY_INDEX)}},
        {VBSF, {v(VIRTUAL_BASS_SRC_FREQ_LOW), v(VIRTUAL_BASS_SRC_FREQ_HIGH)}},
        {VBMF, {v(VIRTUAL_BASS_MIX_FREQ_LOW), v(VIRTUAL_BASS_MIX_FREQ_HIGH)}}};
    for (const auto& [source, target] : kSimple) passed[target] = {v(source)};
    TestRecord record(in);
    ParameterTranslator translator;
    translator.setSource(&record, ENDPOINT_SPEAKER, false);
    SetParamCommand all(0x40000000);
    all.setDeviceId(0x2);
    translator.translateAll(all);
    std::vector<VexParameter> order;
    for (const Entry& entry : entriesOf(all)) {
        order.push_back(entry.param);
        EXPECT_EQ(0x2, entry.device);
        if (passed.count(entry.param) != 0) {
            EXPECT_EQ(passed[entry.param], entry.values) << kVexParameterNames[entry.param];
        }
    }
    EXPECT_EQ(kOrder, order);

    TestRecord again(everyParameterSet());
    translator.setSource(&again, ENDPOINT_SPEAKER, false);
    SetParamCommand reversed(0x40000000);
    reversed.setDeviceId(0x2);
    for (int p = kNumParameters - 1; p >= 0; p--) {
        translator.onParameterChanged(static_cast<Parameter>(p));
    }
    translator.translatePending(reversed);
    EXPECT_EQ(all.mBuffer, reversed.mBuffer);
}

TEST(ParameterTranslatorTest, QueuedTranslatorsRunOnceWithTheSourcesEndpointAndMono) {
    ParameterTranslator translator;
    SetParamCommand cmd(5);
    translator.translatePending(cmd);
    EXPECT_EQ((std::vector<int>{5, 0}), cmd.mBuffer);

    TestRecord record({{GEQ_FREQUENCY, {100}},
                       {GEQ_GAIN, {3}},
                       {VIRTUALIZER_ENABLE, {1}},
                       {ORIENTATION, {0}},
                       {OUTPUT_MIX_MATRIX, {5}}});
    translator.setSource(&record, ENDPOINT_SPEAKER, true);
    for (Parameter p : {GEQ_GAIN, ORIENTATION, GEQ_FREQUENCY, GEQ_GAIN, VIRTUAL_BASS_MODE}) {
        translator.onParameterChanged(p);
    }
    translator.translatePending(cmd);
    translator.translatePending(cmd);
    EXPECT_EQ((std::vector<Entry>{{-1, GEBS, {1, 100, 3}}, {-1, DOM, {0, 0, 1, 5}}}),
              entriesOf(cmd));
}

}  // namespace
}  // namespace korva
