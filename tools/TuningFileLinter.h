// Reports what the library accepts in a tuning file without a word but that changes what reaches
// the effect: misspelt element names, numbers it reads only in part, lists that disagree, records
// that refer to records that do not exist, and values that the file's format version replaces.
//
// The linter walks the file with the reader's own cursor moves and value setters, so it sees the
// file exactly as the library does, and compares what each element says with the records that the
// library's parser made of the same file.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "model/Parameter.h"
#include "model/ParameterValues.h"
#include "reader/ValueSetter.h"
#include "tools/Finding.h"
#include "tools/LineTrackingIterator.h"
#include "tools/TuningFileRecords.h"

namespace korva::tool {

class TuningFileLinter {
public:
    // records: the library's reading of the same file. It must outlive the linter.
    explicit TuningFileLinter(const TuningFileRecords& records);

    // False when the file is not readable XML; the one finding then says why.
    bool lint(const std::string& path);

    void add(int line, Severity severity, std::string message);
    // By line; findings of one line in the order they were made.
    std::vector<Finding> findings() const;
    int rootLine() const { return mRootLine; }

    enum class RecordKind { kProfile, kProfileEndpoint, kTuning, kIeqPreset, kGeqPreset };

private:
    // The last value each parameter got from the file's elements, and from which line.
    struct Written {
        std::vector<int> values;
        int line;
    };
    using WrittenValues = std::map<Parameter, Written>;

    struct ProfileInfo {
        int line;
        const Profile* record;
    };
    struct EndpointInfo {
        int line;
        const ProfileEndpoint* record;
    };
    struct TuningInfo {
        int line;
        std::string name;
        const Tuning* record;
    };
    struct DeviceInfo {
        int line;
        std::string device;
        std::string port;
        std::string tuning;
    };

    // The file's root children, as the reader's first pass reads them.
    void lintHeader();
    void lintGlobalSettings();
    // The reader's second pass: presets, profiles and tunings in file order.
    void lintBody();
    void lintPreset();
    // A preset's bands, read by the setter of that name with the cursor on the preset.
    void lintPresetBands(const char* setterName, RecordKind kind);
    void lintProfile();
    void lintEndpoint();
    // False when the tuning has no data element, which ends the reading of the file.
    bool lintTuning();
    void lintDeviceTuning(const std::string& tuningName);
    // What the records say of each other, once all are known.
    void lintReferences();
    void lintSpeakerTuning();
    void lintSteppedOver();

    // A parameter element under the cursor, read by its setter.
    void lintParameter(ValueSetter& setter, RecordKind kind, WrittenValues* written);
    void lintAttributes(ValueSetter& setter);
    void lintSimple();
    void lintRow(bool isDrc);
    void lintMixMatrix();
    void lintIntAttributes();
    void lintNamedInts(const std::vector<std::string>& names);
    void lintRows(int levels, const std::vector<std::string>& names, const std::string& rowName,
                  const std::string& booleanName);
    // Values the format version replaced after the file's elements were read.
    void lintReplaced(const WrittenValues& written, const ParameterValues* record);

    // An element the reader skips in this place; parameters: whether parameter elements belong
    // here, for the name to suggest.
    void unknownElement(const std::string& name, const std::string& where, bool parameters,
                        const std::vector<std::string>& structural);
    void lintInt(int line, const std::string& what, const std::string& text);
    void lintBoolean(int line, const std::string& what, const std::string& text);
    std::vector<std::pair<std::string, std::string>> attributes();
    std::string attribute(const std::string& name, bool* present = nullptr);
    std::string element() const;
    std::string versionNote() const;

    bool isVersion32() const;
    bool isVersion330() const;

    const TuningFileRecords& mRecords;
    LineTrackingIterator mIterator;
    std::string mPath;
    std::string mFormatVersion;
    int mRootLine = 0;
    std::vector<Finding> mFindings;

    // Records made by the parser, matched to elements by their order.
    size_t mNextIeqPreset = 0;
    size_t mNextGeqPreset = 0;
    size_t mNextProfile = 0;
    size_t mNextEndpoint = 0;
    size_t mNextTuning = 0;

    std::vector<ProfileInfo> mProfiles;
    std::vector<EndpointInfo> mEndpoints;
    std::vector<TuningInfo> mTunings;
    std::vector<DeviceInfo> mDevices;
    std::map<int, int> mIeqPresetLines;
    // The first IEQ preset's band count, which the others are compared with.
    struct {
        int line = 0;
        int presetId = 0;
        size_t bands = 0;
    } mIeqBands;
    std::map<int, int> mGeqPresetLines;
};

}  // namespace korva::tool
