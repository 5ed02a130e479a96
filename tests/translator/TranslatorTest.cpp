// The command buffer every blob is made of and its hand-over to the engine; translation from
// tuning parameters to its entries: which translator each parameter reaches, the order in which a
// record's translators write their entries, and the cases that tell the branches and boundaries
// of each composite translator apart.

#include <android/log.h>
#include <gtest/gtest.h>

#include <map>
#include <new>
#include <set>
#include <tuple>
#include <vector>

#include "LogCapture.h"
#include "engine/VexParamStore.h"
#include "model/ParameterValues.h"
#include "translator/ParameterTranslator.h"
#include "translator/SetParamCommand.h"
#include "translator/SimpleTranslator.h"
#include "translator/TranslatorCollection.h"
#include "translator/VexEffect.h"

namespace korva {
namespace {

using Words = std::vector<int>;
using Values = std::map<Parameter, Words>;

TEST(SetParamCommandTest, EveryOverloadAppendsOneEntryInTheBlobLayout) {
    SetParamCommand cmd(3);
    EXPECT_EQ((Words{3, 0}), cmd.mBuffer);
    Words a = {1, 2}, empty, c = {7};
    cmd.add(DVLE, 5);
    cmd.add(IEON, &a);
    cmd.add(IEON, &empty);
    cmd.setDeviceId(0x8);
    cmd.add(GEBS, {&a, &empty, &c});
    cmd.add(GEBS, {&empty, &empty});
    cmd.add(IEBS, 9, {&a, &empty});
    cmd.add(IEBS, -4, {&empty});
    // Earlier entries keep their device id, a repeated parameter is a second entry, and the count
    // word is left for execute() to write.
    const int ieon = vexParameterCode(IEON), gebs = vexParameterCode(GEBS);
    const int iebs = vexParameterCode(IEBS);
    // clang-format off
    EXPECT_EQ((Words{3, 0, -1, 0x656C7664, 1, 5, -1, ieon, 2, 1, 2, -1, ieon, 0,
                     8, gebs, 3, 1, 2, 7, 8, gebs, 0, 8, iebs, 3, 9, 1, 2, 8, iebs, 1, -4}),
              cmd.mBuffer);
    // clang-format on
    EXPECT_EQ(7, cmd.mCount);
}

TEST(SetParamCommandTest, ExecuteHandsTheEntriesToTheEngineAndCommitsOnce) {
    VexParamStore& store = android::Singleton<VexParamStore>::getInstance();
    store.clear();
    VexEffect effect(0, android::String16());
    test::LogCapture log;
    SetParamCommand cmd(2);
    EXPECT_EQ(0, cmd.execute(effect));
    EXPECT_EQ((Words{2, 0}), cmd.mBuffer);
    EXPECT_EQ(0, store.commitCount());

    Words gains = {3, -2}, none;
    cmd.setDeviceId(0x2);
    cmd.add(DVLE, 1);
    cmd.add(GEON, &none);
    cmd.setDeviceId(0x8);
    cmd.add(DVLE, 2, {&gains});
    // send() reports -22 whether or not the engine took the blob.
    EXPECT_EQ(-22, cmd.execute(effect));
    EXPECT_EQ(3, cmd.mBuffer[1]);
    EXPECT_EQ((Words{1}), store.getParam(0x2, vexParameterCode(DVLE)));
    EXPECT_EQ((Words{2, 3, -2}), store.getParam(0x8, vexParameterCode(DVLE)));
    EXPECT_TRUE(store.hasParam(0x2, vexParameterCode(GEON)));
    EXPECT_EQ(3u, store.paramCount());
    EXPECT_EQ(1, store.commitCount());
    // A blob without entries still commits.
    Words empty = {0, 0};
    EXPECT_EQ(0, effect.sendSharedStore(empty.data(), 8));
    EXPECT_EQ(2, store.commitCount());
    EXPECT_TRUE(log.lines().empty());

    // A blob whose second entry runs past its end is refused whole, with one error line.
    const int dvle = vexParameterCode(DVLE);
    Words cut = {0, 2, 0x4, dvle, 1, 1, 0x4, dvle, 3, 1};
    EXPECT_EQ(-22, effect.send(0, cut));
    EXPECT_EQ(3u, store.paramCount());
    EXPECT_EQ(2, store.commitCount());
    ASSERT_EQ(1u, log.lines().size());
    EXPECT_EQ(ANDROID_LOG_ERROR, log.lines()[0].priority);
    EXPECT_EQ(
        1u, log.count("sendSharedStore() Invalid data for setting parameter values.", "VexEffect"));
}

// A record kind that accepts every parameter but `refused`.
class TestRecord : public ParameterValues {
public:
    explicit TestRecord(Values initial, int refused = kNumParameters) : ParameterValues(7, false) {
        values = std::move(initial);
        for (int p = 0; p < kNumParameters; p++) {
            if (p != refused) mValid.insert(static_cast<Parameter>(p));
        }
    }
    int64_t getId() const override { return id; }
    const std::set<Parameter>& getValidParams() const override { return mValid; }

private:
    std::set<Parameter> mValid;
};

// Device id, parameter, values.
using Entry = std::tuple<int, VexParameter, std::vector<int>>;

// The entries after the two header words; an unknown code, an entry running past the buffer or
// an entry count other than the command's fails the test.
std::vector<Entry> entriesOf(const SetParamCommand& cmd) {
    std::map<int, VexParameter> byCode;
    for (int i = 0; i < kNumVexParameters; i++) {
        byCode[vexParameterCode(static_cast<VexParameter>(i))] = static_cast<VexParameter>(i);
    }
    std::vector<Entry> entries;
    const std::vector<int>& w = cmd.mBuffer;
    for (size_t at = 2; at < w.size();) {
        size_t end = at + 3 + (at + 2 < w.size() ? static_cast<size_t>(w[at + 2]) : 0);
        if (end > w.size() || byCode.count(w[at + 1]) == 0) {
            ADD_FAILURE() << "bad entry at word " << at;
            break;
        }
        entries.push_back({w[at], byCode[w[at + 1]], {w.begin() + at + 3, w.begin() + end}});
        at = end;
    }
    EXPECT_EQ(static_cast<size_t>(cmd.mCount), entries.size());
    return entries;
}

TEST(TranslatorCollectionTest, ParametersWithoutTranslatorMapToNull) {
    // Every other parameter, composite sources included, reaches a translator.
    TranslatorCollection collection;
    EXPECT_EQ(static_cast<size_t>(kNumParameters) - 4, collection.getTranslators().size());
    for (Parameter p : {BASS_EXTRACTION_CUTOFF_FREQUENCY, BASS_EXTRACTION_ENABLE, OUTPUT_CHANNELS,
                        VIRTUAL_BASS_MODE}) {
        EXPECT_EQ(nullptr, collection.getTranslator(p)) << kParameterNames[p];
    }
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

TEST(ParameterTranslatorTest, EntriesComeInTranslatorCreationOrder) {
    const std::vector<VexParameter> kOrder = {
        GEON, GEBS, IEON, IEA,  IEID, IEBS, MDEE, MDLE, MIEE, MSCE, MAVE, MVBE, AOON, AOBS, BEON,
        BEB,  BECF, BEW,  PLB,  DEA,  DEON, DED,  ARSA, ARBS, RSSA, ARDS, ARON, ARDE, AROD, ARTP,
        RSSE, NGON, DSB,  VBM,  VBON, VBSF, VBMF, VBOG, VBSG, VBHG, VBBG, VBCT, VBHM, VBHB, VBMX,
        VBRG, VMB,  DVLA, DVLC, DVLE, DVLI, DVLO, DVME, DVMC, DOM,  DHFM, DFSA, DSA,  DHSA, DRSA,
        DRHA, SVSB, VSSD, CEON, CEQT, DPLP, DRCM, HPON, HPTW, HPAT, HPAA, HPAR, BMDE, BMDT, RVSA,
        RVSE, HVM,  HVRC, HLRA, SDFA, SVM,  AVSB, SVRC, VBCG, HFON, HFCF, DSOA, DSOI, DSOE};
    // Every translator writes every entry it can, and every source holds a value of its own, so
    // the entries of the translators that only pass lists on show which sources they read.
    Values in;
    for (int p = 0; p < kNumParameters; p++) in[static_cast<Parameter>(p)] = {p + 1};
    in[OUTPUT_CHANNELS] = {2};
    for (Parameter on : {VIRTUAL_BASS_ENABLE, COMPLEX_EQUALIZER_ENABLE, BASS_MBDRC_ENABLE,
                         REGULATOR_SIBILANCE_SUPPRESS_ENABLE, DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE}) {
        in[on] = {1};
    }
    auto v = [&in](Parameter p) { return in.at(p)[0]; };
    // clang-format off
    std::map<VexParameter, std::vector<int>> passed = {
        {IEBS, {1, v(IEQ_FREQUENCY), v(IEQ_TARGET)}}, {DRCM, {v(CUSTOM_DRC_METADATA)}},
        {VBCG, {v(VIRTUAL_BASS_BLEND_LINEAR_GAIN_SEPARATED)}}, {HFON, {v(HIGH_PASS_FILTER_ENABLE)}},
        {HFCF, {v(HIGH_PASS_FILTER_CUTOFF_FREQUENCY_INDEX)}},
        {VBSF, {v(VIRTUAL_BASS_SRC_FREQ_LOW), v(VIRTUAL_BASS_SRC_FREQ_HIGH)}},
        {VBMF, {v(VIRTUAL_BASS_MIX_FREQ_LOW), v(VIRTUAL_BASS_MIX_FREQ_HIGH)}}};
    // clang-format on
    TestRecord record(in);
    ParameterTranslator translator;
    translator.setSource(&record, ENDPOINT_SPEAKER, false);
    SetParamCommand all(0x40000000);
    all.setDeviceId(0x2);
    translator.translateAll(all);
    std::vector<VexParameter> order;
    for (const auto& [device, param, values] : entriesOf(all)) {
        order.push_back(param);
        EXPECT_EQ(0x2, device);
        if (passed.count(param) != 0) {
            EXPECT_EQ(passed[param], values) << kVexParameterNames[param];
        }
    }
    EXPECT_EQ(kOrder, order);
}

TEST(ParameterTranslatorTest, QueuedTranslatorsRunOnceWithTheSourcesEndpointAndMono) {
    ParameterTranslator translator;
    SetParamCommand cmd(5);
    translator.translatePending(cmd);
    EXPECT_EQ((std::vector<int>{5, 0}), cmd.mBuffer);

    // clang-format off
    TestRecord record({{GEQ_FREQUENCY, {100}}, {GEQ_GAIN, {3}}, {VIRTUALIZER_ENABLE, {1}},
                       {ORIENTATION, {0}}, {OUTPUT_MIX_MATRIX, {5}}});
    // clang-format on
    translator.setSource(&record, ENDPOINT_SPEAKER, true);
    // Queued in another order than the translators were made in, some twice, one without
    // translator.
    for (Parameter p : {ORIENTATION, GEQ_GAIN, GEQ_FREQUENCY, VIRTUAL_BASS_MODE, GEQ_GAIN}) {
        translator.onParameterChanged(p);
    }
    translator.translatePending(cmd);
    translator.translatePending(cmd);
    EXPECT_EQ((std::vector<Entry>{{-1, GEBS, {1, 100, 3}}, {-1, DOM, {0, 0, 1, 5}}}),
              entriesOf(cmd));
}

// In Case::after: the parameter must not be in the record at all.
const std::vector<int> kAbsent = {-999999};

struct Case {
    Parameter source;  // picks the translator under test
    const char* name;
    Values input;
    std::vector<std::pair<VexParameter, std::vector<int>>> expected;
    Values after = {};  // record values after translation, for the parameters listed
    Endpoint endpoint = ENDPOINT_SPEAKER;
    bool mono = false;
    int refused = kNumParameters;  // a parameter the record kind does not accept
};

// base with extra's lists put in.
Values with(Values base, const Values& extra) {
    for (const auto& [parameter, list] : extra) base[parameter] = list;
    return base;
}

TEST(CompositeTranslatorTest, EachBranchAndBoundary) {
    const Parameter de = DIALOG_ENHANCER_AMOUNT, mbdrc = BASS_MBDRC_TUNING;
    const Parameter dsoi = DYNAMIC_SPEAKER_OPTIMIZATION_SPEAKER_INTERVAL;
    const Parameter ao = AUDIO_OPTIMIZER_FREQUENCY, ce = COMPLEX_EQUALIZER_TUNING_LEFT;
    const Parameter stress = REGULATOR_STRESS_AMOUNT, channels = OUTPUT_CHANNELS;
    // clang-format off
    const Values dso = {{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {1}},
        {DYNAMIC_SPEAKER_OPTIMIZATION_AMOUNT, {7}}, {dsoi, {5, 6}}};
    const Values mode = {
        {VIRTUALIZER_ENABLE, {1}}, {ORIENTATION, {0}}, {OUTPUT_MIX_MATRIX, {1, 2, 3, 4}}};
    const Values optimizer = {{ao, {100, 200, 300}}, {AUDIO_OPTIMIZER_GAIN_L, {1, 2, 3}},
        {AUDIO_OPTIMIZER_GAIN_R, {4, 5, 6}}, {AUDIO_OPTIMIZER_GAIN_LS, {7}},
        {AUDIO_OPTIMIZER_GAIN_RS, {8}}};
    const Values ceq = {{COMPLEX_EQUALIZER_ENABLE, {1}}, {ce, {1, 2}},
        {COMPLEX_EQUALIZER_TUNING_RIGHT, {3, 4}}, {COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND, {5, 6}},
        {COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND, {7, 8}}};
    const Values bands = {{REGULATOR_FREQUENCY, {100, 200}}, {REGULATOR_THRESHOLD_LOW, {1, 2}},
        {REGULATOR_THRESHOLD_HIGH, {3, 4}}, {REGULATOR_ISOLATED_BAND, {5}}};
    const std::vector<int> arbs = {2, 100, 200, 1, 2, 3, 4, 5};
    const Values sibilance = with(bands, {{REGULATOR_STRESS_AMOUNT, {9}},
        {REGULATOR_SIBILANCE_SUPPRESS_ENABLE, {1}},
        {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT, {1, 2}},
        {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT, {3, 4}},
        {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND, {5}},
        {REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND, {6}}});
    const Case cases[] = {
        {de, "clamped in a copy", {{de, {13}}}, {{DEA, {12}}}, {{de, {13}}}},
        {de, "at the cap", {{de, {12}}}, {{DEA, {12}}}},
        {de, "no lower bound", {{de, {-3}}}, {{DEA, {-3}}}},
        {de, "first value only", {{de, {20, 30}}}, {{DEA, {12, 30}}}},
        {GEQ_GAIN, "gains not counted", {{GEQ_FREQUENCY, {100, 200}}, {GEQ_GAIN, {3}}},
         {{GEBS, {2, 100, 200, 3}}}},
        {mbdrc, "mbdrc off", {{BASS_MBDRC_ENABLE, {0}}, {mbdrc, {5}}}, {}},
        {mbdrc, "any non-zero is on", {{BASS_MBDRC_ENABLE, {2}}, {mbdrc, {5, 6}}},
         {{BMDT, {5, 6}}}},

        // Speaker interval layout: 1 (first interval only) below four channels, else 2.
        {dsoi, "three channels cut the record's interval", with(dso, {{channels, {3}}}),
         {{DSOA, {7}}, {DSOI, {1, 5}}, {DSOE, {1}}}, {{dsoi, {5}}}},
        {dsoi, "four channels", with(dso, {{channels, {4}}}),
         {{DSOA, {7}}, {DSOI, {2, 5, 6}}, {DSOE, {1}}}, {{dsoi, {5, 6}}}},
        {dsoi, "channels missing", dso, {{DSOA, {7}}, {DSOI, {2, 5, 6}}, {DSOE, {1}}}},
        {dsoi, "interval missing", {{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {3}}, {channels, {2}}},
         {{DSOA, {}}, {DSOI, {2}}, {DSOE, {3}}}},
        {dsoi, "off sends only the switch",
         with(dso, {{DYNAMIC_SPEAKER_OPTIMIZATION_ENABLE, {0}}, {channels, {2}}}), {{DSOE, {0}}},
         {{dsoi, {5, 6}}}},

        // Output mode: the speaker gets the matrix, and mono rewrites the record.
        {ORIENTATION, "mono speaker", mode, {{DOM, {0, 0, 1, 1, 2, 3, 4}}},
         {{VIRTUALIZER_ENABLE, {0}}, {ORIENTATION, {1}}, {OUTPUT_MIX_MATRIX, {1, 2, 3, 4}}},
         ENDPOINT_SPEAKER, true},
        {ORIENTATION, "mono ignored off the speaker",
         {{VIRTUALIZER_ENABLE, {0}}, {ORIENTATION, {2}}},
         {{DOM, {0, 2, 2}}}, {{ORIENTATION, {2}}, {OUTPUT_MIX_MATRIX, kAbsent}}, ENDPOINT_OTHER,
         true},
        // A record kind without the virtualizer gets no output mode, and nothing is read from it.
        {ORIENTATION, "no virtualizer", {}, {},
         {{VIRTUALIZER_ENABLE, kAbsent}, {ORIENTATION, kAbsent}}, ENDPOINT_SPEAKER, false,
         VIRTUALIZER_ENABLE},

        // The optimizer writes only for 2 or 4 channels.
        {ao, "stereo", with(optimizer, {{channels, {2}}}),
         {{AOBS, {3, 2, 100, 200, 300, 1, 2, 3, 4, 5, 6}}}},
        {ao, "four: left, right, surrounds", with(optimizer, {{channels, {4}}}),
         {{AOBS, {3, 4, 100, 200, 300, 1, 2, 3, 4, 5, 6, 7, 8}}}},
        {ao, "six channels", with(optimizer, {{channels, {6}}}), {}},
        {ao, "channels missing", optimizer, {}, {{channels, {}}}},
        {ao, "stereo reads no surround gains", {{channels, {2}}}, {{AOBS, {0, 2}}},
         {{AUDIO_OPTIMIZER_GAIN_LS, kAbsent}, {AUDIO_OPTIMIZER_GAIN_L, {}}}},

        // The complex equalizer falls back to stereo, and only 1 switches it on.
        {ce, "four channels", with(ceq, {{channels, {4}}}),
         {{CEQT, {4, 2, 1, 2, 3, 4, 5, 6, 7, 8}}}},
        {ce, "six channels", with(ceq, {{channels, {6}}}), {{CEQT, {2, 2, 1, 2, 3, 4}}}},
        {ce, "channels missing", ceq, {{CEQT, {2, 2, 1, 2, 3, 4}}}},
        {ce, "2 is off", with(ceq, {{COMPLEX_EQUALIZER_ENABLE, {2}}}), {}},

        // The stress list is made two long below three channels; sibilance falls back to stereo.
        {stress, "stereo pads the record's stress list",
         with(bands, {{channels, {2}}, {stress, {7}}}), {{ARSA, {2, 7, 0}}, {ARBS, arbs}},
         {{stress, {7, 0}}}},
        {stress, "mono cuts it", with(bands, {{channels, {1}}, {stress, {1, 2, 3}}}),
         {{ARSA, {1, 1, 2}}, {ARBS, arbs}}, {{stress, {1, 2}}}},
        {stress, "three keep it; the whole channel list goes",
         with(bands, {{channels, {3, 9}}, {stress, {7}}}), {{ARSA, {3, 9, 7}}, {ARBS, arbs}}},
        {stress, "channels missing keep it", with(bands, {{stress, {1, 2, 3}}}),
         {{ARSA, {1, 2, 3}}, {ARBS, arbs}}, {{channels, {}}}},
        {stress, "sibilance, four channels", with(sibilance, {{channels, {4}}}),
         {{ARSA, {4, 9}}, {ARBS, arbs}, {RSSA, {4, 2, 1, 2, 3, 4, 5, 6}}}},
        {stress, "sibilance, six channels", with(sibilance, {{channels, {6}}}),
         {{ARSA, {6, 9}}, {ARBS, arbs}, {RSSA, {2, 2, 1, 2, 3, 4}}}},
        {stress, "sibilance switch must be exactly 1",
         with(sibilance, {{channels, {6}}, {REGULATOR_SIBILANCE_SUPPRESS_ENABLE, {2}}}),
         {{ARSA, {6, 9}}, {ARBS, arbs}}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TestRecord record(c.input, c.refused);
        SetParamCommand cmd(0x40000000);
        cmd.setDeviceId(0x4000);
        ParameterTranslator::sTranslatorCollection->getTranslator(c.source)->vexTranslate(
            cmd, record, c.endpoint, c.mono);
        std::vector<Entry> expected;
        for (const auto& [param, values] : c.expected) expected.push_back({0x4000, param, values});
        EXPECT_EQ(expected, entriesOf(cmd));
        for (const auto& [parameter, values] : c.after) {
            auto held = record.values.find(parameter);
            EXPECT_EQ(values, held == record.values.end() ? kAbsent : held->second)
                << kParameterNames[parameter];
        }
        EXPECT_FALSE(record.dirty);
    }
}

}  // namespace
}  // namespace korva
