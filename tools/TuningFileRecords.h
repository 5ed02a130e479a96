// The library's reading of a tuning file: the records its parser builds, in the order the parser
// built them (which is the order of the file), kept alive as long as this object.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "model/DeviceData.h"
#include "reader/TuningFileParser.h"

namespace korva::tool {

class TuningFileRecords {
public:
    TuningFileRecords();
    ~TuningFileRecords();

    TuningFileRecords(const TuningFileRecords&) = delete;
    TuningFileRecords& operator=(const TuningFileRecords&) = delete;

    // Reads the file with the library's parser. False when it cannot be read as XML; error()
    // then says why, with the line, as libxml2 put it.
    bool read(const std::string& path);
    const std::string& error() const { return mError; }
    // As read, after making sure the file opens; reports what went wrong.
    bool readOrReport(const std::string& path);

    std::string formatVersion() const;
    std::string toolVersion() const;
    int gameSystemGain() const;
    // Every profile element counts, also those whose records share an id.
    int numOfProfiles() const;
    // The name of the last profile read with this id; empty for an id the file does not have.
    std::string profileName(int id) const;

    const std::vector<IeqPreset*>& ieqPresets() const { return mIeqPresets; }
    const std::vector<GeqPreset*>& geqPresets() const { return mGeqPresets; }
    const std::vector<Profile*>& profiles() const { return mProfiles; }
    const std::vector<ProfileEndpoint*>& profileEndpoints() const { return mProfileEndpoints; }
    const std::vector<Tuning*>& tunings() const { return mTunings; }
    const std::vector<DeviceTuning*>& deviceTunings() const { return mDeviceTunings; }

    // Profile ids and tuning device names once each, in file order.
    std::vector<int> profileIds() const;
    std::vector<std::string> deviceNames() const;

private:
    std::unique_ptr<TuningFileParser> mParser;
    std::string mError;
    std::vector<IeqPreset*> mIeqPresets;
    std::vector<GeqPreset*> mGeqPresets;
    std::vector<Profile*> mProfiles;
    std::vector<ProfileEndpoint*> mProfileEndpoints;
    std::vector<Tuning*> mTunings;
    std::vector<DeviceTuning*> mDeviceTunings;
};

}  // namespace korva::tool
