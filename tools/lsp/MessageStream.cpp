#include "tools/lsp/MessageStream.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>

namespace korva::tool {

bool MessageStream::fill() {
    char bytes[64 * 1024];
    ssize_t n;
    while ((n = read(mFd, bytes, sizeof(bytes))) < 0 && errno == EINTR) {
    }
    if (n > 0) {
        mBuffer.append(bytes, static_cast<size_t>(n));
    }
    return n > 0 || (n < 0 && errno == EAGAIN);
}

MessageStream::Next MessageStream::next(std::string* body) {
    if (mBodySize != std::string::npos) {
        if (mBuffer.size() < mBodySize) {
            return Next::kNone;
        }
        body->assign(mBuffer, 0, mBodySize);
        mBuffer.erase(0, mBodySize);
        mBodySize = std::string::npos;
        return Next::kMessage;
    }
    const size_t end = mBuffer.find("\r\n\r\n");
    if (end == std::string::npos || end > kMaxHeader) {
        if (mBuffer.size() <= kMaxHeader) {
            return Next::kNone;
        }
        // Only the last kMaxHeader bytes before a header's end can be a header.
        mBuffer.erase(0, (end == std::string::npos ? mBuffer.size() : end) - kMaxHeader);
        const bool reported = mJunk;
        mJunk = true;
        return reported ? next(body) : Next::kBadFrame;
    }
    std::string header = mBuffer.substr(0, end);
    mBuffer.erase(0, end + 4);
    std::transform(header.begin(), header.end(), header.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    // The last length wins: bytes left over from a bad frame may come before it.
    const size_t field = header.rfind("content-length:");
    size_t size = 0;
    size_t at =
        field == std::string::npos ? header.size() : header.find_first_not_of(' ', field + 15);
    const size_t digits = at;
    for (; at < header.size() && isdigit(static_cast<unsigned char>(header[at])) && size <= kMaxBody;
         at++) {
        size = size * 10 + static_cast<size_t>(header[at] - '0');
    }
    at = std::min(header.find_first_not_of(' ', at), header.size());
    if (at == digits || size > kMaxBody || (at < header.size() && header[at] != '\r')) {
        return Next::kBadFrame;
    }
    mJunk = false;
    mBodySize = size;
    return next(body);
}

bool MessageStream::write(int fd, const Json& message) {
    const std::string body = message.dump(-1, ' ', false, Json::error_handler_t::replace);
    const std::string frame = "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
    for (size_t done = 0; done < frame.size();) {
        const ssize_t n = ::write(fd, frame.data() + done, frame.size() - done);
        if (n < 0 && errno != EINTR) {
            return false;
        }
        done += static_cast<size_t>(std::max<ssize_t>(n, 0));
    }
    return true;
}

}  // namespace korva::tool
