#include "tools/load/StoreSession.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "platform/LocalProperties.h"
#include "store/SpatializerParamArrayConstants.h"
#include "tools/load/TemporaryPaths.h"
#include "tools/render/ToolOutput.h"

namespace korva::tool {

namespace {

std::string failed(const std::string& what) {
    return what + ": " + strerror(errno);
}

// Where the library can read the file the user named: a regular file where it is; "-" (standard
// input, read from its descriptor: a socket cannot be opened again by name), a pipe or a process
// substitution, which can be read only once, copied first.
bool readablePath(const std::string& path, TemporaryPaths& made, std::string* readable) {
    const bool standardInput = path == "-";
    struct stat status;
    if ((standardInput ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status)) != 0 ||
        (!standardInput && access(path.c_str(), R_OK) != 0)) {
        ToolOutput::error(path, failed("cannot open"));
        return false;
    }
    if (S_ISDIR(status.st_mode)) {
        ToolOutput::error(path, "is a directory, not a tuning file");
        return false;
    }
    if (S_ISREG(status.st_mode) && !standardInput) {
        *readable = path;
        return true;
    }
    std::string copy;
    const int out = made.makeFile("paramtool-input", &copy);
    if (out < 0) {
        ToolOutput::error(path, failed("cannot make a temporary copy"));
        return false;
    }
    const int in = standardInput ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    char bytes[64 * 1024];
    ssize_t n = in < 0 ? -1 : 0;
    while (in >= 0 && ((n = read(in, bytes, sizeof(bytes))) > 0 || (n < 0 && errno == EINTR))) {
        if (n > 0 && write(out, bytes, static_cast<size_t>(n)) != n) {
            n = -1;
            break;
        }
    }
    const int readErrno = errno;
    if (in >= 0 && !standardInput) {
        close(in);
    }
    const bool written = close(out) == 0;
    if (n < 0 || !written) {
        errno = readErrno;
        ToolOutput::error(path, failed("cannot read"));
        return false;
    }
    *readable = copy;
    return true;
}

// A throw-away folder laid out like the device's /odm and /vendor, in which every tuning file
// path the store may choose is a link to the file: with KORVA_HOST_ROOT naming it, the store
// loads that file whatever the product name and amplifier properties select. Empty, or why it
// could not be made.
std::string makeHostRoot(const std::string& file, TemporaryPaths& made, std::string* root) {
    // Quick, so interrupts simply wait for it: each path is listed as it is made.
    const TemporaryPaths::Hold hold;
    char target[PATH_MAX];
    if (realpath(file.c_str(), target) == nullptr) {
        return strerror(errno);
    }
    *root = TemporaryPaths::pattern("spatializer-paramtool");
    if (mkdtemp(root->data()) == nullptr) {
        return failed("cannot make a temporary folder");
    }
    made.add(*root);
    for (const std::string path : kTuningFiles) {
        for (size_t slash = path.find('/', 1); slash != std::string::npos;
             slash = path.find('/', slash + 1)) {
            const std::string folder = *root + path.substr(0, slash);
            // The folders the paths share are there already: the root is new.
            if (mkdir(folder.c_str(), 0700) == 0) {
                made.add(folder);
            } else if (errno != EEXIST) {
                return failed("cannot make " + folder);
            }
        }
        if (symlink(target, (*root + path).c_str()) != 0) {
            return failed("cannot link " + *root + path);
        }
        made.add(*root + path);
    }
    return "";
}

}  // namespace

std::unique_ptr<StoreSession> StoreSession::open(const std::string& tuningFile,
                                                 const Properties& properties, bool keepText,
                                                 bool keepDocument) {
    TemporaryPaths made;
    std::string path;
    std::string root;
    if (!readablePath(tuningFile, made, &path)) {
        return nullptr;
    }
    if (const std::string error = makeHostRoot(path, made, &root); !error.empty()) {
        ToolOutput::error(tuningFile, error);
        return nullptr;
    }
    // The host's property stand-in, which the library reads its log level from as well.
    for (const auto& [key, value] : properties) {
        setLocalProperty(key, value);
    }
    auto report = std::make_unique<LoadReport>();
    report->keepDocument = keepDocument;
    setenv("KORVA_HOST_ROOT", root.c_str(), 1);
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
        std::ifstream in(path, std::ios::binary);
        session->mText.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    return session;
}

bool StoreSession::readable() const {
    if (!mReport->readFailed) {
        return true;
    }
    const long line = mReport->readErrorLine;
    ToolOutput::error(mPath + (line > 0 ? ":" + std::to_string(line) : ""),
                      "not a readable XML document" +
                          (mReport->readError.empty() ? "" : ": " + mReport->readError));
    return false;
}

}  // namespace korva::tool
