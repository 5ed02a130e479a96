#include "model/DeviceTuning.h"

#include <sstream>
#include <utility>

#include "model/CreationOrder.h"

namespace korva {

DeviceTuning::DeviceTuning(std::string device, std::string port, std::string tuning)
    : DeviceTuning(-1, std::move(device), std::move(port), std::move(tuning)) {}

DeviceTuning::DeviceTuning(long long id, std::string device, std::string port, std::string tuning)
    : id(id),
      mDevice(std::move(device)),
      mPort(std::move(port)),
      mTuning(std::move(tuning)),
      dirty(true),
      mCreationSerial(nextCreationSerial()) {}

DeviceTuning::~DeviceTuning() = default;

int64_t DeviceTuning::getId() const {
    return id;
}

bool DeviceTuning::isDirty() const {
    return dirty;
}

void DeviceTuning::setDirty(bool newDirty) {
    dirty = newDirty;
}

std::string DeviceTuning::getDevice() const {
    return mDevice;
}

std::string DeviceTuning::getPort() const {
    return mPort;
}

std::string DeviceTuning::getTuning() const {
    return mTuning;
}

std::string DeviceTuning::toString() const {
    std::ostringstream out;
    out << "id=" << id << "\n"
        << "device=" << mDevice << "\n"
        << "port=" << mPort << "\n"
        << "tuning=" << mTuning;
    return out.str();
}

}  // namespace korva
