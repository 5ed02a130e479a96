#include "bench/BenchFiles.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace korva::bench {

BenchFiles& BenchFiles::get() {
    static BenchFiles sFiles;
    return sFiles;
}

BenchFiles::BenchFiles() {
    const char* tmp = getenv("TMPDIR");
    std::string pattern =
        std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") + "/korva-bench-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data()) == nullptr) {
        perror("korva-bench: mkdtemp");
        abort();
    }
    mDir = buffer.data();
}

BenchFiles::~BenchFiles() {
    for (const auto& [bytes, path] : mFiles) {
        unlink(path.c_str());
    }
    rmdir(mDir.c_str());
}

const std::string& BenchFiles::generated(size_t bytes) {
    auto found = mFiles.find(bytes);
    if (found != mFiles.end()) return found->second;
    std::string path = mDir + "/generated-" + std::to_string(bytes) + ".xml";
    TuningFileGenerator generator(bytes, kBenchSeed);
    if (!generator.writeTo(path)) {
        fprintf(stderr, "korva-bench: cannot write %s\n", path.c_str());
        abort();
    }
    mSummaries[bytes] = generator.summary();
    return mFiles.emplace(bytes, path).first->second;
}

const GeneratedTuningSummary& BenchFiles::summary(size_t bytes) {
    generated(bytes);
    return mSummaries[bytes];
}

std::string BenchFiles::example() const {
    // The first .xml file of the examples folder, by name.
    std::vector<std::string> names;
    if (DIR* dir = opendir(KORVA_EXAMPLES_DIR)) {
        while (dirent* entry = readdir(dir)) {
            std::string name = entry->d_name;
            if (name.size() > 4 && name.compare(name.size() - 4, 4, ".xml") == 0) {
                names.push_back(name);
            }
        }
        closedir(dir);
    }
    if (names.empty()) return "";
    std::sort(names.begin(), names.end());
    return std::string(KORVA_EXAMPLES_DIR) + "/" + names.front();
}

std::string BenchFiles::path(size_t bytes) {
    return bytes == 0 ? example() : generated(bytes);
}

size_t BenchFiles::fileSize(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 ? static_cast<size_t>(info.st_size) : 0;
}

}  // namespace korva::bench
