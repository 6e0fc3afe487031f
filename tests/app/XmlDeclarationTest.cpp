#include "app/XmlDeclaration.h"

#include "ParsedBuffer.h"
#include "platform/core/Encoding.h"

#include <gtest/gtest.h>

using namespace tavrin;
using namespace tavrin::app;

namespace {

TEST(XmlDeclaration, theNameIsReadFromADeclarationAtTheVeryTop) {
    const struct {
        QString text;
        QString name;
    } cases[] = {
        {"", ""},
        {"<a/>", ""},
        {"<?xml version=\"1.0\"?>", ""},
        {"<?xml version=\"1.0\" encoding=\"KOI8-R\"?><a/>", "KOI8-R"},
        {"<?xml version='1.0' encoding = 'utf-8' standalone='yes'?>", "utf-8"},
        {"<?xml\nversion='1.0'\n\tencoding='utf-8'\n?>", "utf-8"},
        {"<?xml version='1.0' encoding='' ?>", ""},
        {"<?xml version='1.0' encoding='utf-8", ""},
        {"<?xml version='1.0' encoding='utf-8?><a b='x'/><?x?>", ""},
        {"<?xml version='1.0' my-encoding='a' encoding='b'?>", "b"},
        {"<?xml-stylesheet encoding='utf-8'?>", ""},
        {" <?xml version='1.0' encoding='utf-8'?>", ""},
        {"<a><?xml version='1.0' encoding='utf-8'?></a>", ""},
        {"<?xml version='1.0'?><?pi encoding='utf-8'?>", ""},
        {"<?xml " + QString(3000, ' ') + "encoding='utf-8'?>", ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(QString::fromStdU16String(declaredEncoding(ParsedBuffer(c.text).buffer)), c.name)
            << c.text.toStdString();
}

TEST(XmlDeclaration, declaringAnEncodingChangesAsLittleAsNeeded) {
    const struct {
        QString text;
        int encoding;
        QString result;
    } cases[] = {
        {"<?xml version='1.0' encoding='utf-8'?>\n<a/>", ENCODING_LATIN2,
         "<?xml version='1.0' encoding='iso-8859-2'?>\n<a/>"},
        {"<?xml\nversion='1.0'\nencoding=\"koi8-r\" standalone='no'?>", ENCODING_UTF8,
         "<?xml\nversion='1.0'\nencoding=\"utf-8\" standalone='no'?>"},
        {"<?xml version='1.0' encoding='UTF8'?>", ENCODING_UTF8, "<?xml version='1.0' encoding='UTF8'?>"},
        {"<?xml version='1.0' encoding=''?>", ENCODING_LATIN1, "<?xml version='1.0' encoding='iso-8859-1'?>"},
        {"<?xml version='1.0' standalone='yes'?>", 1252,
         "<?xml version='1.0' encoding=\"windows-1252\" standalone='yes'?>"},
        {"<?xml version='1.0'?>", ENCODING_UTF8, "<?xml version='1.0'?>"},
        {"<?xml version='1.0'?>", ENCODING_UTF16, "<?xml version='1.0'?>"},
        {"<a/>", ENCODING_UTF16, "<a/>"},
        {"<a/>", ENCODING_LATIN1, "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n<a/>"},
        {"", ENCODING_LATIN1, "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\n"},
    };
    for (const auto& c : cases) {
        ParsedBuffer text(c.text);
        if (const auto edit = declareEncoding(text.buffer, c.encoding)) {
            text.buffer.erase(edit->line, edit->column, edit->line, edit->column + edit->length);
            int line = 0;
            int column = 0;
            text.buffer.insertText(edit->line, edit->column, edit->text, line, column);
        }
        EXPECT_EQ(text.text(), c.result);
    }
}

} // namespace
