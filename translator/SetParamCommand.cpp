#include "translator/SetParamCommand.h"

#include "translator/VexEffect.h"

namespace korva {

SetParamCommand::SetParamCommand(int profileId) : mDeviceId(-1), mCount(0) {
    // The second word is the entry count, filled in when the command is executed.
    mBuffer = {profileId, 0};
}

SetParamCommand::~SetParamCommand() {}

void SetParamCommand::setDeviceId(int deviceId) {
    mDeviceId = deviceId;
}

void SetParamCommand::beginEntry(VexParameter param, size_t numValues) {
    mBuffer.push_back(mDeviceId);
    mBuffer.push_back(vexParameterCode(param));
    mBuffer.push_back(static_cast<int>(numValues));
    mCount++;
}

void SetParamCommand::add(VexParameter param, int value) {
    beginEntry(param, 1);
    mBuffer.push_back(value);
}

void SetParamCommand::add(VexParameter param, std::vector<int>* values) {
    beginEntry(param, values->size());
    mBuffer.insert(mBuffer.end(), values->begin(), values->end());
}

void SetParamCommand::add(VexParameter param, std::initializer_list<std::vector<int>*> lists) {
    size_t numValues = 0;
    for (const std::vector<int>* list : lists) {
        numValues += list->size();
    }
    beginEntry(param, numValues);
    for (const std::vector<int>* list : lists) {
        mBuffer.insert(mBuffer.end(), list->begin(), list->end());
    }
}

void SetParamCommand::add(VexParameter param, int first,
                          std::initializer_list<std::vector<int>*> lists) {
    size_t numValues = 1;
    for (const std::vector<int>* list : lists) {
        numValues += list->size();
    }
    beginEntry(param, numValues);
    mBuffer.push_back(first);
    for (const std::vector<int>* list : lists) {
        mBuffer.insert(mBuffer.end(), list->begin(), list->end());
    }
}

int SetParamCommand::execute(VexEffect& effect) {
    if (mCount == 0) {
        return 0;
    }
    mBuffer[1] = mCount;
    return effect.send(0, mBuffer);
}

}  // namespace korva
