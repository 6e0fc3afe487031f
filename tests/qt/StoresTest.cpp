#include "QtFixture.h"

#include <QClipboard>
#include <QFile>
#include <QMimeData>

namespace tavrin::qt {
namespace {

class StoresTest : public QtFixture {
  protected:
    [[nodiscard]] QString file() const { return folder_.filePath("stored.ini"); }
    void write(const char* content) {
        QFile stored(file());
        ASSERT_TRUE(stored.open(QIODevice::WriteOnly));
        stored.write(content);
    }
};

TEST_F(StoresTest, valuesComeBackFromTheFileWithTheirTypes) {
    {
        QtPlatform writer(file());
        writer.settings().setIntValue("Xml Editor", "Font Size", 12);
        writer.settings().setBoolValue("Xml Editor", "Display Line Numbers", false);
        writer.settings().setStringValue("Xml Editor", "Font Family", u"A, B \u00E9 \U0001F600");
    }
    QtPlatform reader(file());
    const UserSettings& settings = reader.settings();
    EXPECT_EQ(settings.getIntValue("Xml Editor", "Font Size", 1), 12);
    EXPECT_FALSE(settings.getBoolValue("Xml Editor", "Display Line Numbers", true));
    EXPECT_EQ(settings.getStringValue("Xml Editor", "Font Family", u""), u"A, B \u00E9 \U0001F600");
}

TEST_F(StoresTest, valuesOfAnotherTypeAreTheDefault) {
    write("[Xml%20Editor]\nwords=some words\nlist=a, "
          "b\nfraction=1.5\nlarge=99999999999\nnumber=-3\nyes=true\none=1\n");
    QtPlatform reader(file());
    const UserSettings& settings = reader.settings();
    for (const char* key : {"words", "list", "fraction", "large", "yes", "missing"})
        EXPECT_EQ(settings.getIntValue("Xml Editor", key, 7), 7) << key;
    EXPECT_EQ(settings.getIntValue("Xml Editor", "number", 7), -3);
    for (const char* key : {"words", "list", "number", "one", "missing"})
        EXPECT_TRUE(settings.getBoolValue("Xml Editor", key, true)) << key;
    EXPECT_TRUE(settings.getBoolValue("Xml Editor", "yes", false));
    EXPECT_EQ(settings.getStringValue("Xml Editor", "list", u"default"), u"default");
    EXPECT_EQ(settings.getStringValue("Xml Editor", "missing", u"default"), u"default");
}

TEST_F(StoresTest, unreadableFileReadsAsDefaults) {
    write("\x01\x02[[[ not a settings file\n====\n");
    QtPlatform reader(file());
    EXPECT_EQ(reader.settings().getIntValue("Xml Editor", "Font Size", 9), 9);
}

TEST_F(StoresTest, registryWritesOnlyUnderKeysThatExist) {
    constexpr std::string_view key = "SOFTWARE\\Tavrin\\Xml Editor";
    {
        QtPlatform writer(file());
        EXPECT_EQ(writer.registry().readString(key, "Find String"), std::nullopt);
        EXPECT_FALSE(writer.registry().writeString(key, "Find String", u"lost"));
        writer.registry().createKey(key);
        EXPECT_EQ(writer.registry().readString(key, "Find String"), std::nullopt);
        EXPECT_TRUE(writer.registry().writeString(key, "Find String", u"kept"));
        EXPECT_FALSE(writer.registry().writeString("SOFTWARE\\Tavrin", "Find String", u"lost"));
    }
    QtPlatform reader(file());
    EXPECT_EQ(reader.registry().readString(key, "Find String"), u"kept");
}

TEST_F(StoresTest, clipboardKeepsEveryCodeUnit) {
    std::u16string text = u"a\r\nb\nc\rd\te\u00E9\U0001F600";
    text += char16_t(0xD83D); // half a pair
    EXPECT_TRUE(platform_.clipboard().setText(text));
    EXPECT_TRUE(platform_.clipboard().hasText());
    EXPECT_EQ(platform_.clipboard().text(), text);
}

TEST_F(StoresTest, clipboardWithoutTextHasNone) {
    QApplication::clipboard()->clear();
    EXPECT_FALSE(platform_.clipboard().hasText());
    EXPECT_EQ(platform_.clipboard().text(), std::nullopt);
    auto* picture = new QMimeData;
    picture->setData("image/png", "no text");
    QApplication::clipboard()->setMimeData(picture);
    EXPECT_FALSE(platform_.clipboard().hasText());
    EXPECT_EQ(platform_.clipboard().text(), std::nullopt);
}

} // namespace
} // namespace tavrin::qt
