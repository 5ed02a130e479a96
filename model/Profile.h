// A sound profile (dynamic, movie, music, cinema, custom) with its profile-level parameters.
#pragma once

#include <set>
#include <string>

#include "model/Parameter.h"
#include "model/ParameterValues.h"

namespace korva {

class Profile : public ParameterValues {
public:
    // Both select the profile's own graphic-equaliser preset.
    Profile(int profileId, std::string name, bool mobility);
    Profile(long long id, int profileId, std::string name, bool mobility);

    int64_t getId() const override;
    ~Profile() override;
    const std::set<Parameter>& getValidParams() const override;

    int getProfileId() const;
    std::string getName() const;
    void setName(std::string name);
    // Mobility is a flag read from the file, not a user change: it leaves the record clean.
    void setMobility(bool mobility);
    bool isMobility() const;
    int getSelectedGeqPreset() const;
    void setSelectedGeqPreset(int presetId);
    std::string toString() const;
    // Same profile id and same values; the name, mobility and selected preset do not count.
    bool equals(Profile& other);

    // Refers to a set built on first use, safe to read during static initialisation.
    static const std::set<Parameter>& kValidParams;

private:
    int mProfileId;
    std::string mName;
    bool mMobility;
    int mSelectedGeqPreset;
};

}  // namespace korva
