#include <gtest/gtest.h>

#include <string>

#include "platform/LocalProperties.h"
#include "store/CachedIntProperty.h"
#include "store/LogLevel.h"

namespace korva {
namespace {

TEST(CachedIntPropertyTest, ParsesLikePropertyGetInt32) {
    const struct {
        const char* text;
        int32_t value;
    } cases[] = {
        {"4", 4},          {"-3", -3},         {" 7", 7},
        {"4abc", 4},       {"0x10", 16},       {"010", 8},
        {"", 9},           {"abc", 9},         {"2147483647", 2147483647},
        {"2147483648", 9}, {"-2147483649", 9}, {"99999999999999999999", 9},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(c.value, CachedIntProperty::parse(c.text, 9));
    }
}

// Every write, including the first one that creates the property, shows at the very next read.
TEST(CachedIntPropertyTest, SeesEveryChangeAtTheNextRead) {
    const char* const kName = "test.korva.cached";
    CachedIntProperty property(kName, 2);
    EXPECT_EQ(2, property.get());
    EXPECT_EQ(2, property.get());
    // Another property appearing does not make this one exist.
    setLocalProperty("test.korva.other", "8");
    EXPECT_EQ(2, property.get());
    const struct {
        const char* text;
        int32_t value;
    } writes[] = {{"5", 5}, {"5", 5}, {"3", 3}, {"", 2}, {"junk", 2}, {"7", 7}};
    for (const auto& w : writes) {
        SCOPED_TRACE(w.text);
        setLocalProperty(kName, w.text);
        EXPECT_EQ(w.value, property.get());
        EXPECT_EQ(w.value, property.get());
    }
}

TEST(CachedIntPropertyTest, LogLevelFollowsItsProperty) {
    EXPECT_EQ(kDefaultLogLevel, logLevel());
    for (int level : {4, 0, 3, 2, 4}) {
        setLocalProperty(kLogLevelProperty, std::to_string(level));
        EXPECT_EQ(level, logLevel());
        EXPECT_EQ(level >= kLogLevelVerbose, isLogLevelAtLeast(kLogLevelVerbose));
    }
}

}  // namespace
}  // namespace korva
