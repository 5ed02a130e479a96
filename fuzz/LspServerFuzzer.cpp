// The language server reads whatever an editor, or anything else that starts it, writes to its
// input. This target feeds arbitrary bytes to it as its whole input stream (headers, bodies,
// methods and parameters as they come) and lets it serve until the stream ends, without the
// analysis in child processes, whose loads fuzz_tuning_file covers. A crash, a leak or a hang
// here is one an editor could cause.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

#include "fuzz/FuzzSupport.h"
#include "tools/lsp/LspServer.h"

namespace {

int sOutput = -1;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    korva::fuzz::quietLog();
    sOutput = open("/dev/null", O_WRONLY | O_CLOEXEC);
    return sOutput < 0 ? EXIT_FAILURE : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // A memory file reads like the pipe an editor writes to, and ends where the input ends.
    const int input = memfd_create("lsp-input", MFD_CLOEXEC);
    if (input < 0) {
        abort();
    }
    for (size_t written = 0; written < size;) {
        const ssize_t n = write(input, data + written, size - written);
        if (n <= 0) {
            abort();
        }
        written += static_cast<size_t>(n);
    }
    lseek(input, 0, SEEK_SET);
    korva::tool::LspServer::Options options;
    options.analyze = false;
    korva::tool::LspServer server(input, sOutput, options);
    korva::fuzz::consume(server.run());
    close(input);
    return 0;
}
