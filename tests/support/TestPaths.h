#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace korva::test {

// Folder of the tuning files written for the tests.
inline std::string testDataDir() {
    return KORVA_TEST_DATA_DIR;
}

inline std::string testDataFile(const std::string& name) {
    return testDataDir() + "/" + name;
}

// The bundled example tuning file.
inline std::string exampleFile() {
    return KORVA_EXAMPLES_DIR "/kvx-default-spatializer.xml";
}

// A file's bytes; empty when it cannot be read.
inline std::string fileText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace korva::test
