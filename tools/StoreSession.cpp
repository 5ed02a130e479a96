#include "tools/StoreSession.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "platform/LocalProperties.h"
#include "tools/HostRoot.h"
#include "tools/render/ToolOutput.h"
#include "tools/TuningInput.h"

namespace korva::tool {

std::unique_ptr<StoreSession> StoreSession::open(const std::string& tuningFile,
                                                 const Properties& properties, bool keepText,
                                                 bool keepDocument) {
    std::unique_ptr<TuningInput> input = TuningInput::open(tuningFile);
    if (input == nullptr) {
        return nullptr;
    }
    // The host's property stand-in, which the library reads its log level from as well.
    for (const auto& [key, value] : properties) {
        setLocalProperty(key, value);
    }
    std::string error;
    std::unique_ptr<HostRoot> root = HostRoot::create(input->path(), &error);
    if (root == nullptr) {
        ToolOutput::error(tuningFile, error);
        return nullptr;
    }
    auto report = std::make_unique<LoadReport>();
    report->keepDocument = keepDocument;
    setenv("KORVA_HOST_ROOT", root->path().c_str(), 1);
    SpatializerParamArray* store;
    {
        LoadObserver::Scope listening(report.get());
        store = &SpatializerParamArray::getInstance();
    }
    // The store reads its file only while it is constructed.
    unsetenv("KORVA_HOST_ROOT");
    std::unique_ptr<StoreSession> session(new StoreSession(tuningFile, store, std::move(report)));
    if (keepText) {
        // The copy the store read: a pipe's bytes are gone from the pipe by now.
        std::ifstream in(input->path(), std::ios::binary);
        session->mText.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    return session;
}

bool StoreSession::readable() const {
    if (!mReport->readFailed) {
        return true;
    }
    ToolOutput::error(
        mPath + (mReport->readErrorLine > 0 ? ":" + std::to_string(mReport->readErrorLine)
                                            : std::string()),
        "not a readable XML document" +
            (mReport->readError.empty() ? "" : ": " + mReport->readError));
    return false;
}

}  // namespace korva::tool
