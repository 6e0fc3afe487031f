#include "SchemaChecks.h"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

TEST(DtdReader, readsElementsAttributesAndNamespaces) {
    const SchemaFolder folder;
    folder.write("parts.mod", R"(<!ENTITY % inline "b | i">
<![%drafts;[<!ELEMENT draft EMPTY>]]>)");
    const auto file = folder.write("doc.dtd", R"(<!ENTITY % drafts "IGNORE">
<!ENTITY % parts SYSTEM "parts.mod"> %parts;
<!ELEMENT doc (head?, (p | list)+, m:math*, foot)>
<!ATTLIST doc xmlns CDATA #FIXED "urn:doc" xmlns:m CDATA #FIXED "urn:math" id ID #REQUIRED
  kind (long | short) "long" xml:lang NMTOKEN #IMPLIED size CDATA "12">
<!ELEMENT head (#PCDATA)> <!ELEMENT foot EMPTY> <!ELEMENT list ANY>
<!ELEMENT p (#PCDATA | %inline;)*> <!ELEMENT b (#PCDATA)> <!ELEMENT i ((b), (b?, foot)*)>
<!ELEMENT m:math (missing)?> <!ELEMENT loose (alone)> <!ATTLIST nowhere id ID #REQUIRED>)");
    const SchemaReadResult read = readDtd(file);
    const Vocabulary& v = *read.vocabulary;
    EXPECT_EQ(messagesOf(read), "");
    EXPECT_EQ(read.files.size(), 2u);
    struct Case {
        const char16_t* space;
        const char16_t* name;
        const char* content;
    };
    const Case cases[] = {
        {u"urn:doc", u"doc", "(head?, (p | list)+, {urn:math}math*, foot)"},
        {u"urn:doc", u"head", "text ()"},
        {u"urn:doc", u"foot", "()"},
        {u"urn:doc", u"p", "text (b | i)*"},
        {u"urn:doc", u"i", "(b, (b?, foot)*)"},
        {u"urn:math", u"math", "{}missing?"},
        {u"", u"loose", "alone"},
        {u"", u"draft", "not there"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(contentOf(v, c.space, c.name), c.content);
    EXPECT_EQ(contentOf(v, u"urn:doc", u"list").substr(0, 20), "text (*{!} | doc | h");
    EXPECT_EQ(
        attributesOf(v, u"urn:doc", u"doc"),
        "xmlns^=urn:doc {http://www.w3.org/2000/xmlns/}m^=urn:math id!=<a name that is unique in the "
        "document> kind^=long|short {http://www.w3.org/XML/1998/namespace}lang=<a name token> size^=12");
    EXPECT_EQ(v.prefixOf(u"urn:math"), u"m");
    EXPECT_EQ(v.roots().size(), 9u) << "each declared element";
    EXPECT_TRUE(v.element(v.findElement(u"urn:math", u"math")).children.empty()) << "declared nowhere";
}

TEST(DtdReader, takesTheInternalSubsetBeforeTheExternalOne) {
    const SchemaFolder folder;
    folder.write("ext.dtd", "<!ENTITY % content '(b)'><!ELEMENT r (a)> <!ELEMENT a %content;>"
                            "<!ATTLIST a x CDATA #IMPLIED y (no) #IMPLIED>");
    const SchemaReadResult read = readDoctype(
        u"<!DOCTYPE r SYSTEM 'ext.dtd' [<!ENTITY % content 'EMPTY'><!ATTLIST a y (yes) #REQUIRED>]>",
        folder.path() / "new document.xml");
    EXPECT_EQ(messagesOf(read), "");
    EXPECT_EQ(rootsOf(*read.vocabulary), "r");
    EXPECT_EQ(contentOf(*read.vocabulary, u"", u"a"), "()");
    EXPECT_EQ(attributesOf(*read.vocabulary, u"", u"a"), "y!=yes x");

    const SchemaReadResult broken =
        readDoctype(u"<!DOCTYPE r [\n<!ELEMENT r (a)>\n<!ELEMENT >\n]>", "new.xml");
    EXPECT_EQ(contentOf(*broken.vocabulary, u"", u"r"), "a") << "what could be read";
    ASSERT_FALSE(broken.messages.empty());
    EXPECT_EQ(broken.messages[0].line, 3);
}

} // namespace
} // namespace tavrin
