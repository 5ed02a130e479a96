// The parameters of one sound profile on one endpoint, with the intelligent-equaliser preset it
// selects.
#pragma once

#include <set>
#include <string>

#include "model/Parameter.h"
#include "model/ParameterValues.h"

namespace korva {

class ProfileEndpoint : public ParameterValues {
public:
    ProfileEndpoint(int profileId, Endpoint endpoint, int selectedIeqPreset);
    ProfileEndpoint(long id, int profileId, Endpoint endpoint, int selectedIeqPreset);

    int64_t getId() const override;
    ~ProfileEndpoint() override;
    const std::set<Parameter>& getValidParams() const override;

    int getProfileId() const;
    Endpoint getEndpoint() const;
    int getSelectedIeqPreset() const;
    void setSelectedIeqPreset(int presetId);
    std::string toString() const;
    // Same endpoint, profile, selected preset and values; ids and dirty flags do not count.
    bool equals(ProfileEndpoint& other);

    // Refers to a set built on first use, safe to read during static initialisation.
    static const std::set<Parameter>& kValidParams;

private:
    int mProfileId;
    Endpoint mEndpoint;
    int mSelectedIeqPreset;
};

}  // namespace korva
