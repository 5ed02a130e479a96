// The Language Server Protocol's base protocol: JSON-RPC messages framed by a Content-Length
// header. Reads whatever has arrived without waiting for more, so that the server can poll its
// input beside its children, and bounds what it holds: a header that runs on, or a length that
// is missing, malformed or too large, is a framing error after which it reads on.
#pragma once

#include <string>

#include "tools/render/ToolOutput.h"

namespace korva::tool {

class MessageStream {
public:
    static constexpr size_t kMaxHeader = 8 * 1024;
    static constexpr size_t kMaxBody = 64 * 1024 * 1024;

    explicit MessageStream(int fd) : mFd(fd) {}

    int fd() const { return mFd; }

    // Reads what the input has (call when poll says so); false once it has ended.
    bool fill();
    enum class Next { kNone, kMessage, kBadFrame };
    // The next whole message's body, a framing error, or none yet.
    Next next(std::string* body);

    // One message to fd, framed; false when it cannot be written.
    static bool write(int fd, const Json& message);

private:
    int mFd;
    std::string mBuffer;
    size_t mBodySize = std::string::npos;  // while a body is awaited
    bool mJunk = false;                    // a run of bytes without a header, reported once
};

}  // namespace korva::tool
