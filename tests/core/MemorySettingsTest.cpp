#include "platform/core/MemorySettings.h"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

TEST(MemorySettings, valuesAreFoundBySectionAndKey) {
    MemorySettings settings;
    settings.setIntValue("a", "bc", 1);
    settings.setIntValue("ab", "c", 2);
    EXPECT_EQ(settings.getIntValue("a", "bc", 0), 1);
    EXPECT_EQ(settings.getIntValue("ab", "c", 0), 2);
    EXPECT_EQ(settings.getIntValue("abc", "", 7), 7);
}

TEST(MemorySettings, valuesOfAnotherTypeReadAsTheDefault) {
    MemorySettings settings;
    settings.setStringValue("s", "string", u"12");
    settings.setIntValue("s", "int", 1);
    settings.setBoolValue("s", "bool", true);
    EXPECT_EQ(settings.getIntValue("s", "string", -1), -1);
    EXPECT_EQ(settings.getIntValue("s", "bool", -1), -1);
    EXPECT_FALSE(settings.getBoolValue("s", "int", false));
    EXPECT_EQ(settings.getStringValue("s", "int", u"default"), u"default");

    settings.setIntValue("s", "string", 3); // the newest value counts, and so does its type
    EXPECT_EQ(settings.getIntValue("s", "string", -1), 3);
    EXPECT_EQ(settings.getStringValue("s", "string", u"default"), u"default");
}

} // namespace
} // namespace tavrin
