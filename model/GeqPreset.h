// The graphic-equaliser band frequencies and gains of one sound profile.
#pragma once

#include <set>
#include <string>

#include "model/Parameter.h"
#include "model/ParameterValues.h"

namespace korva {

class GeqPreset : public ParameterValues {
public:
    explicit GeqPreset(int profileId);
    GeqPreset(long long id, int profileId);

    int64_t getId() const override;
    ~GeqPreset() override;
    const std::set<Parameter>& getValidParams() const override;

    int getProfileId() const;
    std::string toString() const;
    // Same profile and same values; ids and dirty flags do not count.
    bool equals(GeqPreset& other);

    // Refers to a set built on first use, safe to read during static initialisation.
    static const std::set<Parameter>& kValidParams;

private:
    int mProfileId;
};

}  // namespace korva
