#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "tests/tool/TempFile.h"
#include "tools/HostRoot.h"

namespace korva::tool {
namespace {

TEST(HostRootTest, LinksEveryTuningFilePathToTheFileAndCleansUp) {
    TempFile file("<root/>\n");
    std::string error;
    std::string folder;
    {
        std::unique_ptr<HostRoot> root = HostRoot::create(file.path(), &error);
        ASSERT_NE(root, nullptr) << error;
        folder = root->path();
        for (const char* path : {"/odm/etc/korva/kvx-default-spatializer.xml",
                                 "/odm/etc/korva/kvx-meridane-spatializer.xml",
                                 "/vendor/etc/korva/kvx-default-spatializer.xml",
                                 "/odm/etc/korva/kvx-fs19xx-spatializer.xml"}) {
            std::ifstream in(folder + path);
            std::string text;
            std::getline(in, text);
            EXPECT_EQ(text, "<root/>") << path;
        }
    }
    EXPECT_FALSE(std::ifstream(folder + "/odm/etc/korva/kvx-default-spatializer.xml").good());
    EXPECT_FALSE(std::ifstream(folder).good());
    EXPECT_EQ(HostRoot::create("/no/such/file.xml", &error), nullptr);
}

}  // namespace
}  // namespace korva::tool
