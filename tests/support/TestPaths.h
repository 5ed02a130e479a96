#pragma once

#include <string>

namespace korva::test {

// Folder of the tuning files written for the tests.
inline std::string testDataDir() {
    return KORVA_TEST_DATA_DIR;
}

inline std::string testDataFile(const std::string& name) {
    return testDataDir() + "/" + name;
}

// Folder of the bundled example tuning file.
inline std::string examplesDir() {
    return KORVA_EXAMPLES_DIR;
}

}  // namespace korva::test
