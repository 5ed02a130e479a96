// Binds an output port and device to a Tuning, by the tuning's name. Holds no parameter values.
#pragma once

#include <cstdint>
#include <string>

namespace korva {

class DeviceTuning {
public:
    // Both leave the record dirty, even when it comes with an id.
    DeviceTuning(std::string device, std::string port, std::string tuning);
    DeviceTuning(long long id, std::string device, std::string port, std::string tuning);

    // Declared in this order on purpose: the virtual slots are part of the exported interface.
    virtual int64_t getId() const;
    virtual bool isDirty() const;
    virtual void setDirty(bool dirty);
    virtual ~DeviceTuning();

    DeviceTuning(const DeviceTuning&) = delete;
    DeviceTuning& operator=(const DeviceTuning&) = delete;

    std::string getDevice() const;
    std::string getPort() const;
    std::string getTuning() const;
    // Four "key=value" lines, the last one without a line feed.
    std::string toString() const;

    uint64_t getCreationSerial() const { return mCreationSerial; }

    int64_t id;

private:
    std::string mDevice;
    std::string mPort;
    std::string mTuning;

public:
    bool dirty;

private:
    uint64_t mCreationSerial;
};

}  // namespace korva
