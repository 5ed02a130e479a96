#include "model/GeqPreset.h"

#include <sstream>

namespace korva {

namespace {

const std::set<Parameter>& validParams() {
    static const std::set<Parameter> sValidParams = {GEQ_FREQUENCY, GEQ_GAIN};
    return sValidParams;
}

}  // namespace

const std::set<Parameter>& GeqPreset::kValidParams = validParams();

GeqPreset::GeqPreset(int profileId) : ParameterValues(-1, true), mProfileId(profileId) {}

GeqPreset::GeqPreset(long long id, int profileId)
    : ParameterValues(id, false), mProfileId(profileId) {}

GeqPreset::~GeqPreset() = default;

int64_t GeqPreset::getId() const {
    return id;
}

const std::set<Parameter>& GeqPreset::getValidParams() const {
    return validParams();
}

int GeqPreset::getProfileId() const {
    return mProfileId;
}

std::string GeqPreset::toString() const {
    std::ostringstream out;
    out << "id=" << id << "\n"
        << "profileId=" << mProfileId << "\n"
        << valuesToString();
    return out.str();
}

bool GeqPreset::equals(GeqPreset& other) {
    if (this == &other) {
        return true;
    }
    // The maps are ordered by Parameter, so comparing them compares content whatever order the
    // values were set in.
    return mProfileId == other.mProfileId && values == other.values;
}

}  // namespace korva
