#include "replay/KeyNames.h"

#include <gtest/gtest.h>

namespace tavrin::replay {
namespace {

std::string describe(const KeyStroke& stroke) {
    std::string text = std::to_string(stroke.key) + "/" + std::to_string(stroke.character);
    if (stroke.ctrl)
        text += " ctrl";
    if (stroke.shift)
        text += " shift";
    if (stroke.alt)
        text += " alt";
    return text;
}

TEST(KeyNames, giveTheVirtualKeyTheCharacterAndWhatIsHeld) {
    struct Case {
        std::string_view name;
        std::string_view stroke; ///< key/character held
    };
    for (const Case& c : {
             Case{"Left", "37/0"},
             Case{"Return", "13/13"},
             Case{"Enter", "13/13"},
             Case{"Backspace", "8/8"},
             Case{"Tab", "9/9"},
             Case{"Shift+Tab", "9/9 shift"},
             Case{"Escape", "27/27"},
             Case{"Delete", "46/0"},
             Case{"Space", "32/32"},
             Case{"Ctrl+Space", "32/32 ctrl"},
             Case{"F1", "112/0"},
             Case{"F12", "123/0"},
             Case{"F", "70/70 shift"},
             Case{"Ctrl+Shift+End", "35/0 ctrl shift"},
             Case{"Shift+Ctrl+End", "35/0 ctrl shift"},
             Case{"Alt+Left", "37/0 alt"},
             Case{"Alt+Return", "13/0 alt"},
             Case{"a", "65/97"},
             Case{"A", "65/65 shift"},
             Case{"Shift+a", "65/65 shift"},
             Case{"Ctrl+Z", "90/26 ctrl"},
             Case{"Ctrl+z", "90/26 ctrl"},
             Case{"Ctrl+Shift+z", "90/26 ctrl shift"},
             Case{"Alt+X", "88/0 alt"},
             Case{"7", "55/55"},
             Case{"Shift+7", "55/38 shift"},
             Case{"&", "55/38 shift"},
             Case{"Ctrl+7", "55/0 ctrl"},
             Case{"<", "188/60 shift"},
             Case{"Shift+,", "188/60 shift"},
             Case{"/", "191/47"},
             Case{"\"", "222/34 shift"},
             Case{"#", "51/35 shift"},
             Case{"+", "187/43 shift"},
             Case{"Ctrl++", "187/0 ctrl shift"},
         }) {
        const auto stroke = parseKey(c.name);
        ASSERT_TRUE(stroke) << c.name;
        EXPECT_EQ(describe(*stroke), c.stroke) << c.name;
    }
}

TEST(KeyNames, refuseWhatNoKeyboardHas) {
    for (const std::string_view name : {"", "Ctrl+", "Shift", "left", "F0", "F13", "F01", "Ctrl+Ctrl+A", "ab",
                                        "é", " ", "Ctrl+Foo", "Meta+A"})
        EXPECT_FALSE(parseKey(name)) << name;
}

} // namespace
} // namespace tavrin::replay
