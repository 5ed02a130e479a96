// Reads one tuning XML file into the tuning data model. The parser recognises the structural
// elements (versions, global settings, presets, profiles, profile endpoints, tunings, device
// bindings) and hands every parameter element to the value setter registered for its name.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "model/DeviceData.h"
#include "model/DeviceTuning.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"
#include "reader/SetterCollection.h"
#include "reader/TagIterator.h"

namespace korva {

class TuningFileParser {
public:
    TuningFileParser();
    // Deletes every record read and the DeviceData that refers to them.
    virtual ~TuningFileParser();

    TuningFileParser(const TuningFileParser&) = delete;
    TuningFileParser& operator=(const TuningFileParser&) = delete;

    // Parses the file and builds the DeviceData. Returns 0, or -22 when the file cannot be
    // opened or parsed as XML (nothing is read then). Meant to be called once.
    int setTuningFile(std::string path);
    // Reads the document the cursor is on: versions and global settings first, then presets,
    // profiles and tunings in document order.
    void parseTuningFile();

    bool isParsed();
    DeviceData* getDeviceData();
    int getNumOfProfiles();
    // The name of the last profile read with this id; empty for an id never seen.
    std::string getProfileName(int id);
    // The canonical IEQ preset number named in the text: off 0, detailed 1, balanced 2, warm 3.
    int getIeqPresetIdByName(std::string& name);
    int getIeqPresetIdByName(const std::string& name);

    static SetterCollection* sSetterCollection;

private:
    std::string parseVersion();
    void parseAuthorizedTechnologies();
    void parsePreset();
    void parseProfile();
    void parseProfileEndpoint(int profileId, int ieqEnable, int ieqAmount, int ieqPresetId);
    // False when the tuning has no data element: the rest of the document is then not read.
    bool parseTuning();
    void parseDeviceTuning(std::string& tuningName);

    // Which nodes of a record's data walk are looked up: elements only, or every node with a
    // name of the document's own (elements, processing instructions, entity references).
    enum class NodeTest { kElements, kByName };
    // Applies the registered setter of every node that passes the test, from the cursor to the
    // end of its siblings.
    void applySetters(ParameterValues& record, NodeTest test);
    // Applies the setter of that name to the element under the cursor, if there is one.
    void applySetter(const std::string& name, ParameterValues& record);
    // getIeqPresetIdByName of an attribute's text, reported with the element.
    int readIeqPresetName(const xmlNode* element, const char* attribute, const std::string& name);

    bool isVersion32() const;
    bool isVersion322() const;
    bool isVersion330() const;
    bool isBeforeVersion34() const;

    bool mIsParsed = false;
    int mNumOfProfiles = 0;
    std::map<int, std::string> mProfileNames;
    std::unique_ptr<DeviceData> mDeviceData;
    int mVirtualBassProcessMode = 1;
    int mGameSystemGain = 0;
    bool mDsoEnable = false;
    std::string mFormatVersion;
    std::string mToolVersion;
    // The records, owned here and shared with the DeviceData.
    std::set<IeqPreset*> mIeqPresets;
    std::set<GeqPreset*> mGeqPresets;
    std::set<Profile*> mProfiles;
    std::set<ProfileEndpoint*> mProfileEndpoints;
    std::set<Tuning*> mTunings;
    std::set<DeviceTuning*> mDeviceTunings;
    TagIterator mIterator;
};

}  // namespace korva
