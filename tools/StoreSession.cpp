#include "tools/StoreSession.h"

#include <android-base/properties.h>

#include <cstdlib>
#include <memory>

#include "tools/HostRoot.h"
#include "tools/ToolOutput.h"

namespace korva::tool {

SpatializerParamArray* StoreSession::open(const std::string& tuningFile,
                                          const Properties& properties) {
    for (const auto& [key, value] : properties) {
        if (!android::base::SetProperty(key, value)) {
            ToolOutput::error(tuningFile, "cannot set property " + key);
            return nullptr;
        }
    }
    std::string error;
    std::unique_ptr<HostRoot> root = HostRoot::create(tuningFile, &error);
    if (root == nullptr) {
        ToolOutput::error(tuningFile, error);
        return nullptr;
    }
    setenv("KORVA_HOST_ROOT", root->path().c_str(), 1);
    SpatializerParamArray& store = SpatializerParamArray::getInstance();
    // The store reads its file only while it is constructed.
    unsetenv("KORVA_HOST_ROOT");
    return &store;
}

}  // namespace korva::tool
