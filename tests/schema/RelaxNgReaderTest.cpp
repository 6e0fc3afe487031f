#include "SchemaChecks.h"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

std::string grammar(std::string_view content, std::string_view attributes = "ns='urn:r'") {
    return "<grammar xmlns='http://relaxng.org/ns/structure/1.0' xmlns:q='urn:q' "
           "xmlns:a='http://relaxng.org/ns/compatibility/annotations/1.0' "
           "datatypeLibrary='http://www.w3.org/2001/XMLSchema-datatypes' " +
           std::string(attributes) + ">" + std::string(content) + "</grammar>";
}

TEST(RelaxNgReader, turnsPatternsIntoContent) {
    const SchemaFolder folder;
    folder.write("part.rng",
                 "<group xmlns='http://relaxng.org/ns/structure/1.0'><element name='p1'><empty/></element>"
                 "<ref name='b'/></group>");
    const auto file = folder.write("t.rng", grammar(R"(
      <start><choice><ref name='doc'/><element name='q:alone'><notAllowed/></element></choice></start>
      <define name='doc'><element name='doc'><a:documentation>All  of it.</a:documentation>
        <optional><ref name='a'/></optional>
        <interleave><ref name='b'/><zeroOrMore><element name='q:c'><data type='int'/></element></zeroOrMore></interleave>
        <oneOrMore><choice><text/><ref name='blocks'/></choice></oneOrMore>
        <zeroOrMore><element><anyName><except><nsName/><nsName ns=''/></except></anyName><ref name='anything'/></element></zeroOrMore>
      </element></define>
      <define name='a'><element name='a'><mixed><ref name='b'/></mixed></element></define>
      <define name='b'><element><choice><name>b1</name><name ns='urn:o'>b2</name></choice><empty/></element></define>
      <define name='blocks' combine='choice'><ref name='a'/></define>
      <define name='blocks' combine='choice'><element name='list'><oneOrMore><ref name='blocks'/></oneOrMore></element></define>
      <define name='blocks' combine='choice'><ref name='gone'/></define>
      <define name='blocks' combine='choice'><externalRef href='part.rng'/></define>
      <define name='gone'><element name='gone'><ref name='b'/><notAllowed/></element></define>
      <define name='anything'><zeroOrMore><choice><text/><element><anyName/><ref name='anything'/></element></choice></zeroOrMore></define>
      <define name='both' combine='interleave'><element name='i1'><empty/></element></define>
      <define name='both' combine='interleave'><element name='i2'><ref name='both'/></element></define>
      <define name='unused'><ref name='nowhere'/></define>)"));
    const SchemaReadResult read = readRelaxNg(file);
    const Vocabulary& v = *read.vocabulary;
    EXPECT_EQ(messagesOf(read), "");
    EXPECT_EQ(rootsOf(v), "doc");
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"doc",
         "text (a?, ((b1 | {urn:o}b2) & {urn:q}c*), (a | list | (p1, (b1 | {urn:o}b2)))*, *{!urn:r }*)"},
        {u"a", "text (b1 | {urn:o}b2)"},
        {u"list", "(a | list | (p1, (b1 | {urn:o}b2)))+"},
        {u"b1", "()"},
        {u"gone", "not there"},
        {u"i1", "not there"},
    };
    for (const auto& [name, content] : cases)
        EXPECT_EQ(contentOf(v, u"urn:r", name), content);
    EXPECT_EQ(contentOf(v, u"urn:q", u"c"), "text ()");
    EXPECT_EQ(contentOf(v, u"urn:q", u"alone"), "not there");
    EXPECT_EQ(v.element(v.findElement(u"urn:r", u"doc")).documentation, u"All of it.");
    EXPECT_EQ(v.prefixOf(u"urn:q"), u"q");
}

TEST(RelaxNgReader, offersValuesAndTellsWhatIsRequired) {
    const SchemaFolder folder;
    const auto file = folder.write("t.rng", grammar(R"(<start><element name='e'>
      <attribute name='size'><a:documentation>How large.</a:documentation><choice>
        <value>s</value><a:documentation>Small.</a:documentation><ref name='large'/></choice></attribute>
      <optional><attribute name='flag' a:defaultValue='true'><data type='boolean'/></attribute></optional>
      <attribute name='q:n'><list><data type='int'><param name='minInclusive'>1</param></data><text/></list></attribute>
      <choice><group><attribute name='x'/><attribute name='kind'><value>one</value></attribute></group>
        <attribute name='kind'><value>two</value></attribute><notAllowed/></choice>
      <optional><attribute name='never'><notAllowed/></attribute></optional>
      <zeroOrMore><attribute><nsName ns='urn:q'/></attribute></zeroOrMore>
      <empty/></element></start>
      <define name='large'><choice><value>l</value><value>xl</value></choice></define>)"));
    const SchemaReadResult read = readRelaxNg(file);
    EXPECT_EQ(messagesOf(read), "");
    EXPECT_EQ(attributesOf(*read.vocabulary, u"urn:r", u"e"),
              "size!=s(Small.)|l|xl flag^=true|false {urn:q}n!=<a whole number, 1 or more> x kind!=one|two");
    const Vocabulary& v = *read.vocabulary;
    EXPECT_EQ(v.findAttribute(0, {u"", u"size"})->documentation, u"How large.");
}

TEST(RelaxNgReader, includesOverrideAndGrammarsNest) {
    const SchemaFolder folder;
    folder.write("base.rng", grammar(R"(<start><ref name='old'/></start>
      <define name='old'><element name='old'><empty/></element></define>
      <define name='body'><element name='body'><ref name='inline'/></element></define>
      <div><define name='inline'><element name='i'><text/></element></define></div>)",
                                     ""));
    folder.write(
        "nested.rng",
        grammar(R"(<start><element name='n'><parentRef name='inline'/><ref name='own'/></element></start>
      <define name='own'><element name='own'><empty/></element></define>)",
                ""));
    const auto file = folder.write("t.rng", grammar(R"(
      <include href='base.rng'><start><ref name='body'/></start>
        <define name='inline'><element name='b'><externalRef href='nested.rng' ns='urn:n'/></element></define></include>
      <define name='inline' combine='choice'><grammar><start><ref name='inline'/></start>
        <define name='inline'><element name='inner'><parentRef name='body'/></element></define></grammar></define>
      <include href='t.rng'/> <include href='none.rng'/>)"));
    const SchemaReadResult read = readRelaxNg(file);
    const Vocabulary& v = *read.vocabulary;
    EXPECT_EQ(rootsOf(v), "body");
    EXPECT_EQ(contentOf(v, u"urn:r", u"body"), "(b | inner)");
    EXPECT_EQ(contentOf(v, u"urn:r", u"inner"), "body");
    EXPECT_EQ(contentOf(v, u"urn:r", u"b"), "{urn:n}n");
    EXPECT_EQ(contentOf(v, u"urn:n", u"n"), "(({urn:r}b | {urn:r}inner), own)");
    EXPECT_EQ(contentOf(v, u"urn:r", u"old"), "not there");
    const std::string messages = messagesOf(read);
    EXPECT_NE(messages.find("takes in itself"), std::string::npos) << messages;
    EXPECT_NE(messages.find("none.rng was not found"), std::string::npos) << messages;
}

TEST(RelaxNgReader, saysWhatIsWrongAndUsesTheRest) {
    const SchemaFolder folder;
    const std::pair<const char*, const char*> cases[] = {
        {"<start><ref name='e'/><ref name='none'/></start>", "Nothing defines \"none\"."},
        {"<start><ref name='e'/><ref name='loop'/></start><define name='loop'><ref name='loop'/></define>",
         "\"loop\" refers to itself without an element in between."},
        {"<start><ref name='e'/></start><define name='e'><ref name='e2'/></define>",
         "\"e\" is defined more than once and nothing says how to combine it."},
        {"<start><ref name='e'/><typo/></start>", "\"typo\" is no pattern."},
    };
    for (const auto& [content, message] : cases) {
        const auto file = folder.write(
            "t.rng", grammar(std::string(content) + "<define name='e'><element name='e'><empty/></element>"
                                                    "</define><define name='e2'><empty/></define>"));
        const SchemaReadResult read = readRelaxNg(file);
        EXPECT_NE(messagesOf(read).find(message), std::string::npos) << messagesOf(read);
        EXPECT_EQ(contentOf(*read.vocabulary, u"urn:r", u"e"), "()") << content;
    }
    EXPECT_NE(messagesOf(readRelaxNg(folder.write("x.rng", "<html/>"))).find("no RELAX NG"),
              std::string::npos);
    EXPECT_NE(messagesOf(readRelaxNg(folder.write("y.rng", grammar("")))).find("has no start"),
              std::string::npos);
}

} // namespace
} // namespace tavrin
