// An intelligent-equaliser preset (target curve), selected by profile endpoints through its
// preset number.
#pragma once

#include <set>
#include <string>

#include "model/Parameter.h"
#include "model/ParameterValues.h"

namespace korva {

class IeqPreset : public ParameterValues {
public:
    // Both store the preset number as ieq_id too, so a new preset is always dirty.
    IeqPreset(int presetId, std::string name);
    IeqPreset(long long id, int presetId, std::string name);

    int64_t getId() const override;
    ~IeqPreset() override;
    const std::set<Parameter>& getValidParams() const override;

    int getPresetId() const;
    std::string getName() const;
    void setName(std::string name);
    std::string toString() const;

    // Refers to a set built on first use, safe to read during static initialisation.
    static const std::set<Parameter>& kValidParams;

private:
    int mPresetId;
    std::string mName;
};

}  // namespace korva
