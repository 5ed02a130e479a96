#include "bench/TuningFileGenerator.h"

#include <cctype>
#include <cstdio>

namespace korva::bench {

namespace {

// splitmix64: tiny, fast and the same on every platform, unlike the standard distributions.
class Random {
public:
    explicit Random(uint64_t seed) : mState(seed) {}

    uint64_t nextU64() {
        uint64_t z = (mState += 0x9e3779b97f4a7c15ULL);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
        return z ^ (z >> 31);
    }
    // Uniform in [lo, hi].
    int range(int lo, int hi) {
        uint64_t span = static_cast<uint64_t>(static_cast<int64_t>(hi) - lo + 1);
        return static_cast<int>(lo + static_cast<int64_t>(nextU64() % span));
    }
    bool chance(int percent) { return range(0, 99) < percent; }

private:
    uint64_t mState;
};

// A scalar parameter element: <name value="..."/>. A boolean one when lo > hi.
struct ScalarElement {
    const char* name;
    int lo;
    int hi;
};

// A row parameter element: <name data="v,v,..."/> with a count in [minCount, maxCount].
struct RowElement {
    const char* name;
    int minCount;
    int maxCount;
    int lo;
    int hi;
};

constexpr int kBool = 1;  // lo > hi marks a true/false element
constexpr int kNoBool = 0;

const ScalarElement kProfileScalars[] = {
    {"volume-leveler-enable", kBool, kNoBool},
    {"volume-leveler-amount", 0, 10},
    {"volume-leveler-in-target", -640, -160},
    {"volume-leveler-out-target", -640, -160},
    {"dialog-enhancer-enable", kBool, kNoBool},
    {"dialog-enhancer-amount", 0, 16},
    {"dialog-enhancer-ducking", 0, 16},
    {"surround-decoder-enable", kBool, kNoBool},
    {"surround-boost", 0, 192},
    {"volmax-boost", 0, 192},
    {"graphic-equalizer-enable", kBool, kNoBool},
    {"virtualizer-enable", kBool, kNoBool},
    {"mi-dv-leveler-steering-enable", kBool, kNoBool},
    {"mi-ieq-steering-enable", kBool, kNoBool},
    {"mi-surround-compressor-steering-enable", kBool, kNoBool},
    {"mi-adaptive-virtualizer-steering-enable", kBool, kNoBool},
    {"mi-virtualizer-binaural-steering-enable", kBool, kNoBool},
    {"headphone-virtualizer-mode", 0, 2},
    {"reverb-suppression-enable", kBool, kNoBool},
    {"reverb-suppression-amount", 0, 10},
    {"volume-modeler-enable", kBool, kNoBool},
    {"calibration-boost", 0, 192},
    {"peak-value", 0, 256},
    {"bass-enhancer-enable", kBool, kNoBool},
    {"virtual-bass-process-enable", kBool, kNoBool},
};

const ScalarElement kEndpointScalars[] = {
    {"dialog-enhancer-enable", kBool, kNoBool},
    {"dialog-enhancer-amount", 0, 16},
    {"mi-dialog-enhancer-steering-enable", kBool, kNoBool},
    {"surround-decoder-diffuse-relocating-to-front-amount", 0, 100},
    {"advanced-headphone-virtualizer-lr-angle", 0, 90},
    {"headphone-virtualizer-steerer-source-distance", 1, 8},
    {"hearing-protection-enable", kBool, kNoBool},
    {"hearing-protection-rms-averaging-time-win-len", 100, 4000},
    {"hearing-protection-rms-attenuation-target", -2400, -100},
    {"hearing-protection-attenuation-attack-time", 1, 500},
    {"hearing-protection-attenuation-release-time", 100, 5000},
    {"virtualizer-start-band", 0, 20},
    {"ieq-enable", kBool, kNoBool},
    {"ieq-amount", 0, 10},
};

const RowElement kEndpointRows[] = {
    {"advanced-headphone-virtualizer-rendering-config", 8, 8, 0, 32767},
};

const ScalarElement kTuningScalars[] = {
    {"speaker-virtualizer-mode", 0, 2},
    {"advanced-speaker-virtualizer-start-bin", 0, 64},
    {"bass-enhancer-boost", 0, 384},
    {"bass-enhancer-cutoff-frequency", 20, 400},
    {"bass-enhancer-width", 2, 64},
    {"bass-extraction-enable", kBool, kNoBool},
    {"bass-extraction-cutoff-frequency", 20, 400},
    {"height-filter-mode", 0, 2},
    {"regulator-enable", kBool, kNoBool},
    {"regulator-overdrive", 0, 192},
    {"regulator-timbre-preservation", 0, 16},
    {"regulator-distortion-slope", 0, 16},
    {"regulator-speaker-dist-enable", kBool, kNoBool},
    {"regulator-sibilance-suppress-enable", kBool, kNoBool},
    {"virtual-bass-mode", 0, 3},
    {"virtual-bass-rolloff-gain", -480, 0},
    {"virtual-bass-blend-linear-gain", 0, 16384},
    {"virtual-bass-overall-gain", -480, 0},
    {"virtual-bass-slope-gain", 0, 4},
    {"virtualizer-front-speaker-angle", 0, 30},
    {"virtualizer-height-speaker-angle", 0, 90},
    {"virtualizer-rear-height-speaker-angle", 0, 90},
    {"virtualizer-surround-speaker-angle", 0, 180},
    {"virtualizer-rear-surround-speaker-angle", 0, 180},
    {"volume-leveler-compressor-enable", kBool, kNoBool},
    {"volume-modeler-calibration", -320, 320},
    {"audio-optimizer-enable", kBool, kNoBool},
    {"complex-equalizer-enable", kBool, kNoBool},
    {"bass-mbdrc-enable", kBool, kNoBool},
    {"high-pass-filter-enable", kBool, kNoBool},
    {"high-pass-filter-cutoff-frequency-index", 0, 15},
    {"dynamic-speaker-optimization-amount", 0, 10},
};

const RowElement kTuningRows[] = {
    {"advanced-speaker-virtualizer-rendering-config", 8, 16, 0, 32767},
    {"regulator-stress-amount", 20, 40, 0, 256},
    {"regulator-sibilance-suppress-amounts-left", 20, 40, 0, 256},
    {"regulator-sibilance-suppress-amounts-right", 20, 40, 0, 256},
    {"regulator-sibilance-suppress-amounts-left-surround", 20, 40, 0, 256},
    {"regulator-sibilance-suppress-amounts-right-surround", 20, 40, 0, 256},
    {"virtual-bass-harmgains", 3, 6, -480, 0},
    {"virtual-bass-hybgains", 3, 6, -480, 0},
    {"virtual-bass-blend-linear-gain-separated", 2, 4, 0, 16384},
    {"virtual-bass-mix-frequency", 2, 4, 20, 400},
    {"virtual-bass-compressor-tuning", 6, 12, -960, 960},
    {"complex-equalizer-tuning-left", 32, 160, -32768, 32767},
    {"complex-equalizer-tuning-right", 32, 160, -32768, 32767},
    {"complex-equalizer-tuning-left-surround", 32, 160, -32768, 32767},
    {"complex-equalizer-tuning-right-surround", 32, 160, -32768, 32767},
    {"bass-mbdrc-tuning", 12, 48, -1000, 1000},
    {"drc-metadata", 4, 16, 0, 65535},
    {"dynamic-speaker-optimization-speaker-interval", 2, 8, 0, 1000},
};

// Typical Q14 mix coefficients: 1.0, 1/sqrt(2), 0.5, 0 and their negatives.
const int kMixCoefficients[] = {16384, 11583, 8192, 0, 0, 0, -8192, -11583};

const char* const kStandardProfileNames[] = {"dynamic", "movie", "music", "cinema", "custom"};
const char* const kIeqPresetNames[] = {"off", "detailed", "balanced", "warm"};

// The n-th root of x by bisection: basic arithmetic only, so the bytes written are the same
// whatever the maths library.
double nthRoot(double x, int n) {
    double lo = 1.0;
    double hi = x;
    for (int i = 0; i < 100; i++) {
        double mid = (lo + hi) / 2;
        double power = 1.0;
        for (int k = 0; k < n; k++) power *= mid;
        (power < x ? lo : hi) = mid;
    }
    return lo;
}

// Band centres from 20 Hz to 20 kHz, spread logarithmically over count bands.
std::vector<int> bandFrequencies(int count) {
    std::vector<int> out;
    out.reserve(count);
    double step = count > 1 ? nthRoot(1000.0, count - 1) : 1.0;
    double frequency = 20.0;
    for (int i = 0; i < count; i++) {
        out.push_back(static_cast<int>(frequency + 0.5));
        frequency *= step;
    }
    return out;
}

class DocumentWriter {
public:
    DocumentWriter(Random& random, GeneratedTuningSummary& summary)
        : mRandom(random), mSummary(summary) {}

    void setTiny(bool tiny) { mTiny = tiny; }

    std::string mPresets;
    std::string mProfiles;
    std::string mTunings;

    size_t size() const {
        return kHead.size() + mPresets.size() + mProfiles.size() + mTunings.size() + kTail.size();
    }
    std::string document() const { return kHead + mPresets + mProfiles + mTunings + kTail; }

    void ieqPreset(int id, const std::string& name, int bands) {
        std::string& out = mPresets;
        open(out, 1, "preset", {{"id", std::to_string(id)}, {"name", name}, {"type", "ieq"}});
        open(out, 2, "data", {});
        open(out, 3, "bands", {});
        std::vector<int> frequencies = bandFrequencies(bands);
        for (int frequency : frequencies) {
            leaf(out, 4, "band_ieq",
                 {{"frequency", std::to_string(frequency)},
                  {"target", std::to_string(mRandom.range(-320, 320))}});
        }
        close(out, 3, "bands");
        close(out, 2, "data");
        close(out, 1, "preset");
        mSummary.ieqPresets++;
    }

    void geqPreset(int profileId, const std::string& name, int bands) {
        std::string& out = mPresets;
        std::string id = std::to_string(profileId);
        open(out, 1, "preset", {{"id", id}, {"name", name}, {"type", "geq"}});
        open(out, 2, "data", {});
        open(out, 3, "bands", {});
        for (int frequency : bandFrequencies(bands)) {
            leaf(out, 4, "band_geq",
                 {{"frequency", std::to_string(frequency)},
                  {"gain", std::to_string(mRandom.range(-12, 12) * 16)}});
        }
        close(out, 3, "bands");
        close(out, 2, "data");
        close(out, 1, "preset");
        mSummary.geqPresets++;
    }

    // A lean profile keeps a handful of parameters so that the smallest file stays small.
    void profile(int id, const std::string& name, int ieqPresets, bool lean) {
        std::string& out = mProfiles;
        open(out, 1, "profile",
             {{"id", std::to_string(id)},
              {"name", name},
              {"group", mRandom.chance(20) ? "mobility" : "default"}});
        open(out, 2, "data", {});
        int percent = lean ? (mTiny ? 8 : 20) : 90;
        for (const ScalarElement& element : kProfileScalars) {
            if (mRandom.chance(percent)) scalar(out, 3, element);
        }
        leaf(out, 3, "ieq-enable", {{"value", mRandom.chance(70) ? "true" : "false"}});
        leaf(out, 3, "ieq-amount", {{"value", std::to_string(mRandom.range(0, 10))}});
        endpoint(out, "speaker", ieqPresets, lean);
        endpoint(out, "headphone", ieqPresets, lean);
        if (!lean && mRandom.chance(12)) endpoint(out, "other", ieqPresets, lean);
        close(out, 2, "data");
        close(out, 1, "profile");
        mSummary.profiles++;
        mSummary.profileIds.push_back(id);
    }

    // Device tunings are (name, port) pairs.
    void tuning(const std::string& name, const char* endpoint,
                const std::vector<std::pair<std::string, std::string>>& devices, bool lean) {
        std::string& out = mTunings;
        bool speaker = std::string(endpoint) == "speaker";
        open(out, 1, "tuning",
             {{"name", name},
              {"endpoint_type", endpoint},
              {"mono_device", mRandom.chance(10) ? "true" : "false"},
              {"orientation", std::to_string(mRandom.range(0, 3))},
              {"output_channels", speaker ? std::to_string(mRandom.range(2, 8)) : "2"}});
        for (const auto& [device, port] : devices) {
            leaf(out, 2, "device_id", {{"id", device}, {"endpoint_port", port}});
            mSummary.deviceTunings.emplace_back(device, port);
        }
        open(out, 2, "data", {});
        int percent = lean ? 15 : 90;
        for (const ScalarElement& element : kTuningScalars) {
            if (mRandom.chance(percent)) scalar(out, 3, element);
        }
        for (const RowElement& element : kTuningRows) {
            if (mRandom.chance(mTiny ? 0 : percent)) row(out, 3, element);
        }
        leaf(out, 3, "virtual-bass-mix-freqs",
             {{"frequency_low", std::to_string(mRandom.range(20, 80))},
              {"frequency_high", std::to_string(mRandom.range(100, 300))}});
        leaf(out, 3, "virtual-bass-src-freqs",
             {{"frequency_low", std::to_string(mRandom.range(20, 80))},
              {"frequency_high", std::to_string(mRandom.range(100, 300))}});
        leaf(out, 3, "virtual-bass-subgains",
             {{"gain_1", std::to_string(mRandom.range(-960, 0))},
              {"gain_2", std::to_string(mRandom.range(-960, 0))},
              {"gain_3", std::to_string(mRandom.range(-960, 0))}});
        if (!lean) {
            audioOptimizerBands(out);
            regulatorTuning(out);
        }
        outputMode(out, lean);
        close(out, 2, "data");
        close(out, 1, "tuning");
        mSummary.tunings++;
    }

private:
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    static const std::string kHead;
    static const std::string kTail;

    static void indent(std::string& out, int depth) { out.append(depth * 4, ' '); }

    static void attributes(std::string& out, const Attributes& attributes) {
        for (const auto& [name, value] : attributes) {
            out += ' ';
            out += name;
            out += "=\"";
            out += value;
            out += '"';
        }
    }
    static void open(std::string& out, int depth, const char* name, const Attributes& attrs) {
        indent(out, depth);
        out += '<';
        out += name;
        attributes(out, attrs);
        out += ">\n";
    }
    static void close(std::string& out, int depth, const char* name) {
        indent(out, depth);
        out += "</";
        out += name;
        out += ">\n";
    }
    static void leaf(std::string& out, int depth, const char* name, const Attributes& attrs) {
        indent(out, depth);
        out += '<';
        out += name;
        attributes(out, attrs);
        out += "/>\n";
    }

    void scalar(std::string& out, int depth, const ScalarElement& element) {
        std::string value = element.lo > element.hi
                                ? (mRandom.chance(60) ? "true" : "false")
                                : std::to_string(mRandom.range(element.lo, element.hi));
        leaf(out, depth, element.name, {{"value", value}});
    }

    std::string numberList(int count, int lo, int hi) {
        std::string text;
        for (int i = 0; i < count; i++) {
            if (i > 0) text += ',';
            text += std::to_string(mRandom.range(lo, hi));
        }
        return text;
    }

    void row(std::string& out, int depth, const RowElement& element) {
        int count = mRandom.range(element.minCount, element.maxCount);
        leaf(out, depth, element.name, {{"data", numberList(count, element.lo, element.hi)}});
    }

    void endpoint(std::string& out, const char* id, int ieqPresets, bool lean) {
        open(out, 3, "endpoint_type", {{"id", id}});
        leaf(out, 4, "include", {{"ieq_preset", std::to_string(mRandom.range(0, ieqPresets - 1))}});
        int percent = lean ? (mTiny ? 8 : 20) : 90;
        for (const ScalarElement& element : kEndpointScalars) {
            if (mRandom.chance(percent)) scalar(out, 4, element);
        }
        for (const RowElement& element : kEndpointRows) {
            if (mRandom.chance(percent)) row(out, 4, element);
        }
        close(out, 3, "endpoint_type");
        mSummary.endpoints++;
    }

    void audioOptimizerBands(std::string& out) {
        open(out, 3, "audio-optimizer-bands", {});
        for (int frequency : bandFrequencies(mRandom.range(20, 40))) {
            leaf(out, 4, "band",
                 {{"frequency", std::to_string(frequency)},
                  {"gain_left", std::to_string(mRandom.range(-480, 480))},
                  {"gain_right", std::to_string(mRandom.range(-480, 480))},
                  {"gain_left_surround", std::to_string(mRandom.range(-480, 480))},
                  {"gain_right_surround", std::to_string(mRandom.range(-480, 480))}});
        }
        close(out, 3, "audio-optimizer-bands");
    }

    void regulatorTuning(std::string& out) {
        open(out, 3, "regulator-tuning", {});
        for (int frequency : bandFrequencies(mRandom.range(20, 40))) {
            leaf(out, 4, "band",
                 {{"frequency", std::to_string(frequency)},
                  {"threshold_low", std::to_string(mRandom.range(-2400, -600))},
                  {"threshold_high", std::to_string(mRandom.range(-600, 0))},
                  {"isolated_band", mRandom.chance(25) ? "true" : "false"}});
        }
        close(out, 3, "regulator-tuning");
    }

    // Mix matrices: per mode a header row (mode, coefficient count), then one row of input
    // coefficients per output channel. Lean tunings carry the three modes of a stereo phone.
    void outputMode(std::string& out, bool lean) {
        static const int kLeanShapes[3][3] = {{15, 4, 6}, {11, 4, 4}, {10, 4, 3}};
        static const int kOutputs[] = {2, 4, 6, 8};
        static const int kInputs[] = {2, 4, 8, 12, 16};
        open(out, 3, "output-mode", {});
        open(out, 4, "matrix", {});
        int modes = lean ? 3 : mRandom.range(2, 5);
        for (int m = 0; m < modes; m++) {
            int mode = lean ? kLeanShapes[m][0] : mRandom.range(1, 15);
            int outputs = lean ? kLeanShapes[m][1] : kOutputs[mRandom.range(0, 3)];
            int inputs = lean ? kLeanShapes[m][2] : kInputs[mRandom.range(0, 4)];
            leaf(out, 5, "row",
                 {{"coefficients", std::to_string(mode) + "," + std::to_string(outputs * inputs)}});
            for (int o = 0; o < outputs; o++) {
                std::string text;
                for (int i = 0; i < inputs; i++) {
                    if (i > 0) text += ',';
                    text += std::to_string(kMixCoefficients[mRandom.range(0, 7)]);
                }
                leaf(out, 5, "row", {{"coefficients", text}});
            }
        }
        close(out, 4, "matrix");
        close(out, 3, "output-mode");
    }

    Random& mRandom;
    GeneratedTuningSummary& mSummary;
    bool mTiny = false;
};

const std::string DocumentWriter::kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<korva_tuning>\n"
    "    <tool_version major=\"2\" minor=\"7\" maintenance=\"13\"/>\n"
    "    <format_version major=\"3\" minor=\"4\" maintenance=\"0\"/>\n"
    "    <authorized_technologies>\n"
    "        <global_setting dynamic_speaker_optimization_enable=\"true\" "
    "orbex_game_system_gain=\"-4\" virtual_bass_process=\"1\"/>\n"
    "    </authorized_technologies>\n";
const std::string DocumentWriter::kTail = "</korva_tuning>\n";

const char* const kHeadphonePorts[] = {"headphone", "bluetooth", "usb"};
const char* const kOtherPorts[] = {"hdmi", "miracast", "other"};

}  // namespace

TuningFileGenerator::TuningFileGenerator(size_t targetBytes, uint64_t seed)
    : mTargetBytes(targetBytes), mSeed(seed) {}

std::string TuningFileGenerator::generate() {
    mSummary = GeneratedTuningSummary();
    Random random(mSeed);
    DocumentWriter writer(random, mSummary);

    // The standard set every device file has: four IEQ presets, the five profiles with their
    // GEQ presets, a speaker tuning and the headphone tuning that serves the default devices.
    // Below 20 KB they shrink to eight bands and few parameters, so that 10 KB can be asked for.
    bool tiny = mTargetBytes < 20000;
    writer.setTiny(tiny);
    int bands = tiny ? 8 : 20;
    int ieqPresets = 4;
    for (int i = 0; i < ieqPresets; i++) {
        writer.ieqPreset(i, kIeqPresetNames[i], bands);
    }
    for (int id = 0; id < 5; id++) {
        writer.geqPreset(id, std::string("geq_") + kStandardProfileNames[id], bands);
        writer.profile(id, kStandardProfileNames[id], ieqPresets, true);
    }
    // The speaker's own tuning is bound under the empty device name: the store looks the speaker
    // up by the selection of its port, which nothing has made when the file is loaded.
    writer.tuning("speaker_main", "speaker",
                  {{"", "internal_speaker"}, {"speaker_main", "internal_speaker"}}, true);
    writer.tuning("headphone_main", "headphone",
                  {{"default_headphone", "headphone"},
                   {"default_bluetooth", "bluetooth"},
                   {"default_usb", "usb"}},
                  true);

    // Then more of everything until the size is reached. Every sixteenth extra profile reuses
    // a standard id, as files that carry alternatives for a profile do.
    // The size is checked after every record, so a file ends at most one record over it.
    for (int step = 0; writer.size() < mTargetBytes; step++) {
        if (step % 2 == 0) {
            writer.ieqPreset(ieqPresets, "ieq_custom_" + std::to_string(ieqPresets),
                             random.range(10, 64));
            ieqPresets++;
            if (writer.size() >= mTargetBytes) break;
        }
        int id = step % 16 == 15 ? step % 5 : 5 + step;
        std::string name = "profile_" + std::to_string(5 + step);
        writer.geqPreset(id, "geq_" + name, random.range(10, 40));
        writer.profile(id, name, ieqPresets, false);
        if (writer.size() >= mTargetBytes) break;

        std::string tuningName = "tuning_" + std::to_string(step);
        std::vector<std::pair<std::string, std::string>> devices;
        const char* endpoint;
        switch (step % 3) {
            case 0:
                endpoint = "speaker";
                devices.emplace_back("spk_" + std::to_string(step), "internal_speaker");
                break;
            case 1: {
                endpoint = "headphone";
                int count = random.range(1, 3);
                for (int d = 0; d < count; d++) {
                    const char* port = kHeadphonePorts[(step + d) % 3];
                    devices.emplace_back(std::string(port) + "_" + std::to_string(step), port);
                }
                break;
            }
            default:
                endpoint = "other";
                const char* port = kOtherPorts[random.range(0, 2)];
                devices.emplace_back("ext_" + std::to_string(step), port);
                break;
        }
        writer.tuning(tuningName, endpoint, devices, false);
    }
    return writer.document();
}

bool TuningFileGenerator::writeTo(const std::string& path) {
    std::string text = generate();
    FILE* file = fopen(path.c_str(), "wb");
    if (file == nullptr) return false;
    bool ok = fwrite(text.data(), 1, text.size(), file) == text.size();
    ok = fclose(file) == 0 && ok;
    return ok;
}

size_t parseByteSize(const std::string& text) {
    size_t value = 0;
    size_t i = 0;
    for (; i < text.size() && isdigit(static_cast<unsigned char>(text[i])); i++) {
        value = value * 10 + (text[i] - '0');
    }
    if (i == 0) return 0;
    if (i == text.size()) return value;
    if (i + 1 != text.size()) return 0;
    switch (text[i]) {
        case 'k':
        case 'K':
            return value * 1000;
        case 'm':
        case 'M':
            return value * 1000 * 1000;
        default:
            return 0;
    }
}

}  // namespace korva::bench
