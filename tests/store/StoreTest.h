// Base of the tests that need the store: an empty host root so no tuning file of this machine
// is read, the store built over it, test access to its tables, and the log from then on.
#pragma once

#include <android/log.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogCapture.h"
#include "ScopedHostRoot.h"
#include "SpatializerParamArrayTestPeer.h"
#include "store/SpatializerParamArray.h"
#include "store/SpatializerParamArrayConstants.h"

namespace korva::test {

using Lines = std::vector<std::string>;

class StoreTest : public ::testing::Test {
protected:
    std::vector<std::string> storeLines(int priority) const {
        return mLog.messages(kStoreLogTag, priority);
    }
    std::vector<std::string> errors() const { return storeLines(ANDROID_LOG_ERROR); }

    ScopedHostRoot mRoot;
    SpatializerParamArray& mStore = SpatializerParamArray::getInstance();
    SpatializerParamArrayTestPeer mPeer{mStore};
    LogCapture mLog;
};

}  // namespace korva::test
