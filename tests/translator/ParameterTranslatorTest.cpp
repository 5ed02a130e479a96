#include <gtest/gtest.h>

#include <vector>

#include "TranslatorTestSupport.h"
#include "model/Tuning.h"
#include "translator/ParameterTranslator.h"
#include "translator/SimpleTranslator.h"

namespace korva {
namespace {

using test::entriesOf;
using test::Entry;
using test::paramsOf;
using test::TestRecord;
using test::Values;

// A record that exercises every translator and every branch that writes an entry.
Values everyParameterSet() {
    Values values;
    for (int p = 0; p < kNumParameters; p++) {
        values[static_cast<Parameter>(p)] = {p + 1};
    }
    values[OUTPUT_CHANNELS] = {2};
    values[VIRTUAL_BASS_ENABLE] = {1};
    values[COMPLEX_EQUALIZER_ENABLE] = {1};
    values[REGULATOR_SIBILANCE_SUPPRESS_ENABLE] = {1};
    values[BASS_MBDRC_ENABLE] = {1};
    values[DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE] = {1};
    return values;
}

// The entry order of a full translation: translators in creation order, each composite's
// entries in its own order.
const std::vector<VexParameter> kFullOrder = {
    GEON, GEBS, IEON, IEA,  IEID, IEBS, MDEE, MDLE, MIEE, MSCE, MAVE, MVBE, AOON, AOBS, BEON,
    BEB,  BECF, BEW,  PLB,  DEA,  DEON, DED,  ARSA, ARBS, RSSA, ARDS, ARON, ARDE, AROD, ARTP,
    RSSE, NGON, DSB,  VBM,  VBON, VBSF, VBMF, VBOG, VBSG, VBHG, VBBG, VBCT, VBHM, VBHB, VBMX,
    VBRG, VMB,  DVLA, DVLC, DVLE, DVLI, DVLO, DVME, DVMC, DOM,  DHFM, DFSA, DSA,  DHSA, DRSA,
    DRHA, SVSB, VSSD, CEON, CEQT, DPLP, DRCM, HPON, HPTW, HPAT, HPAA, HPAR, BMDE, BMDT, RVSA,
    RVSE, HVM,  HVRC, HLRA, SDFA, SVM,  AVSB, SVRC, VBCG, HFON, HFCF, DSOA, DSOI, DSOE,
};

TEST(ParameterTranslatorTest, TranslateAllRunsTranslatorsInCreationOrder) {
    TestRecord record(TestRecord::allParameters(), everyParameterSet());
    ParameterTranslator translator;
    translator.setSource(&record, ENDPOINT_SPEAKER, false);
    SetParamCommand cmd(0x40000000);
    cmd.setDeviceId(0x2);
    translator.translateAll(cmd);
    std::vector<Entry> entries = entriesOf(cmd);
    EXPECT_EQ(kFullOrder, paramsOf(entries));
    for (const Entry& entry : entries) {
        EXPECT_EQ(0x2, entry.device);
    }
    // execute() has not run: the count word is still the caller's to write.
    EXPECT_EQ(0, cmd.mBuffer[1]);
    EXPECT_EQ(0x40000000, cmd.mBuffer[0]);
}

TEST(ParameterTranslatorTest, OutputIsTheSameWhateverTheOrderOfChanges) {
    std::vector<int> forwardBuffer;
    {
        TestRecord record(TestRecord::allParameters(), everyParameterSet());
        ParameterTranslator translator;
        translator.setSource(&record, ENDPOINT_HEADPHONE, false);
        SetParamCommand cmd(1);
        for (int p = 0; p < kNumParameters; p++) {
            translator.onParameterChanged(static_cast<Parameter>(p));
        }
        translator.translatePending(cmd);
        forwardBuffer = cmd.mBuffer;
    }
    TestRecord record(TestRecord::allParameters(), everyParameterSet());
    ParameterTranslator translator;
    translator.setSource(&record, ENDPOINT_HEADPHONE, false);
    SetParamCommand cmd(1);
    for (int p = kNumParameters - 1; p >= 0; p--) {
        translator.onParameterChanged(static_cast<Parameter>(p));
    }
    translator.translatePending(cmd);
    EXPECT_EQ(forwardBuffer, cmd.mBuffer);
    EXPECT_EQ(kFullOrder, paramsOf(entriesOf(cmd)));
}

TEST(ParameterTranslatorTest, SimpleParameterTranslatesToOneEntry) {
    TestRecord record({IEQ_ENABLE}, {{IEQ_ENABLE, {1}}});
    ParameterTranslator translator;
    translator.setSource(&record, ENDPOINT_SPEAKER, false);
    SetParamCommand cmd(0x40000000);
    cmd.setDeviceId(0x8);
    translator.translateAll(cmd);
    EXPECT_EQ((std::vector<int>{0x40000000, 0, 0x8, vexParameterCode(IEON), 1, 1}), cmd.mBuffer);
}

TEST(ParameterTranslatorTest, ValidParametersWithoutValuesGetEmptyEntriesAndLists) {
    TestRecord record({IEQ_AMOUNT, IEQ_ENABLE, BASS_EXTRACTION_ENABLE}, {});
    ParameterTranslator translator;
    translator.setSource(&record, ENDPOINT_SPEAKER, false);
    SetParamCommand cmd(0);
    translator.translateAll(cmd);
    EXPECT_EQ((std::vector<Entry>{{-1, IEON, {}}, {-1, IEA, {}}}), entriesOf(cmd));
    ASSERT_EQ(1u, record.values.count(IEQ_ENABLE));
    ASSERT_EQ(1u, record.values.count(IEQ_AMOUNT));
    EXPECT_TRUE(record.values[IEQ_ENABLE].empty());
    EXPECT_TRUE(record.values[IEQ_AMOUNT].empty());
    // An untranslated parameter is not read, so nothing is inserted for it.
    EXPECT_EQ(0u, record.values.count(BASS_EXTRACTION_ENABLE));
    // ...but the collection now records it as having no translator.
    auto& map = ParameterTranslator::sTranslatorCollection->getTranslators();
    ASSERT_EQ(1u, map.count(BASS_EXTRACTION_ENABLE));
    EXPECT_EQ(nullptr, map.at(BASS_EXTRACTION_ENABLE));
}

TEST(ParameterTranslatorTest, CompositeFedByTwoChangesRunsOnce) {
    TestRecord record(TestRecord::allParameters(),
                      {{GEQ_FREQUENCY, {100, 1000}}, {GEQ_GAIN, {3, -2}}});
    ParameterTranslator translator;
    translator.setSource(&record, ENDPOINT_SPEAKER, false);
    translator.onParameterChanged(GEQ_GAIN);
    translator.onParameterChanged(GEQ_FREQUENCY);
    translator.onParameterChanged(GEQ_GAIN);
    SetParamCommand cmd(0);
    translator.translatePending(cmd);
    EXPECT_EQ((std::vector<Entry>{{-1, GEBS, {2, 100, 1000, 3, -2}}}), entriesOf(cmd));
}

TEST(ParameterTranslatorTest, PendingIsEmptiedAndNothingPendingAddsNothing) {
    ParameterTranslator translator;
    SetParamCommand cmd(5);
    // No source is needed while nothing is pending.
    translator.translatePending(cmd);
    EXPECT_EQ((std::vector<int>{5, 0}), cmd.mBuffer);
    EXPECT_EQ(0, cmd.mCount);

    TestRecord record({IEQ_ENABLE}, {{IEQ_ENABLE, {1}}});
    translator.setSource(&record, ENDPOINT_SPEAKER, false);
    translator.onParameterChanged(IEQ_ENABLE);
    translator.onParameterChanged(VIRTUAL_BASS_MODE);
    translator.translatePending(cmd);
    EXPECT_EQ(1, cmd.mCount);
    translator.translatePending(cmd);
    EXPECT_EQ(1, cmd.mCount);
    // The source stays set for the next translation.
    translator.translateAll(cmd);
    EXPECT_EQ(2, cmd.mCount);
}

TEST(ParameterTranslatorTest, EndpointAndMonoReachTheTranslators) {
    TestRecord record({VIRTUALIZER_ENABLE, ORIENTATION, OUTPUT_MIX_MATRIX},
                      {{VIRTUALIZER_ENABLE, {1}}, {ORIENTATION, {0}}, {OUTPUT_MIX_MATRIX, {5}}});
    ParameterTranslator translator;
    translator.setSource(&record, ENDPOINT_SPEAKER, true);
    SetParamCommand cmd(0);
    translator.translateAll(cmd);
    EXPECT_EQ((std::vector<Entry>{{-1, DOM, {0, 0, 1, 5}}}), entriesOf(cmd));

    translator.setSource(&record, ENDPOINT_HEADPHONE, false);
    SetParamCommand headphone(0);
    translator.translateAll(headphone);
    // The mono correction above stayed in the record.
    EXPECT_EQ((std::vector<Entry>{{-1, DOM, {0, 1, 1}}}), entriesOf(headphone));
}

class RecordingTranslator : public ParameterTranslator {
public:
    void onParameterChanged(Parameter parameter) override {
        mSeen.push_back(parameter);
        ParameterTranslator::onParameterChanged(parameter);
    }
    std::vector<Parameter> mSeen;
};

TEST(ParameterTranslatorTest, TranslateAllOffersEveryValidParameterInAscendingOrder) {
    TestRecord record(
        {VOLUME_LEVELER_ENABLE, GEQ_GAIN, OUTPUT_CHANNELS, ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE},
        {{GEQ_GAIN, {1}}});
    RecordingTranslator translator;
    translator.setSource(&record, ENDPOINT_SPEAKER, false);
    SetParamCommand cmd(0);
    translator.translateAll(cmd);
    EXPECT_EQ((std::vector<Parameter>{ADVANCED_HEADPHONE_VIRTUALIZER_LR_ANGLE, GEQ_GAIN,
                                      OUTPUT_CHANNELS, VOLUME_LEVELER_ENABLE}),
              translator.mSeen);
    EXPECT_EQ((std::vector<VexParameter>{GEBS, DVLE, HLRA}), paramsOf(entriesOf(cmd)));
}

TEST(ParameterTranslatorTest, TuningHoldsAListForEverySimplyTranslatedValidParameter) {
    Tuning tuning("speaker-tuning", ENDPOINT_SPEAKER, false);
    ParameterTranslator translator;
    translator.setSource(&tuning, tuning.getEndpoint(), tuning.isMono());
    SetParamCommand cmd(0x40000000);
    translator.translateAll(cmd);
    int simple = 0;
    for (Parameter parameter : tuning.getValidParams()) {
        Translator* t = ParameterTranslator::sTranslatorCollection->getTranslator(parameter);
        if (dynamic_cast<SimpleTranslator*>(t) != nullptr) {
            simple++;
            EXPECT_EQ(1u, tuning.values.count(parameter)) << kParameterNames[parameter];
        }
    }
    EXPECT_GT(simple, 0);
    EXPECT_GT(cmd.mCount, simple);
    // Translation is reproducible on the same record.
    SetParamCommand again(0x40000000);
    translator.translateAll(again);
    EXPECT_EQ(cmd.mBuffer, again.mBuffer);
}

}  // namespace
}  // namespace korva
