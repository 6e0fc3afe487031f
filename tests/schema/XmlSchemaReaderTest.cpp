#include "SchemaChecks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace tavrin {
namespace {

std::string schema(std::string_view content, std::string_view attributes = "targetNamespace='urn:t'") {
    return "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:t='urn:t' xmlns:o='urn:o' "
           "elementFormDefault='qualified' " +
           std::string(attributes) + ">" + std::string(content) + "</xs:schema>";
}

TEST(XmlSchemaReader, turnsParticlesIntoContent) {
    const SchemaFolder folder;
    folder.write("o.xsd", schema("<xs:element name='x'/>", "targetNamespace='urn:o'"));
    folder.write("o2.xsd", schema("<xs:element name='y' type='xs:int'/>", "targetNamespace='urn:o'"));
    folder.write("chameleon.xsd", schema("<xs:element name='inc'/>", ""));
    const auto file = folder.write("t.xsd", schema(R"(
      <xs:import namespace='urn:o' schemaLocation='o.xsd'/><xs:import namespace='urn:o' schemaLocation='o2.xsd'/>
      <xs:include schemaLocation='chameleon.xsd'/>
      <xs:element name='head' abstract='true'/>
      <xs:element name='m1' substitutionGroup='t:head'/> <xs:element name='m2' substitutionGroup='t:m1'/>
      <xs:group name='g'><xs:sequence>
        <xs:element name='deep' type='t:base'/><xs:element name='bare' form='unqualified' type='xs:int'/>
      </xs:sequence></xs:group>
      <xs:complexType name='base'><xs:sequence><xs:element ref='o:x' minOccurs='0'/></xs:sequence></xs:complexType>
      <xs:complexType name='more'><xs:complexContent><xs:extension base='t:base'>
        <xs:choice maxOccurs='10000'><xs:element ref='t:head'/><xs:any namespace='##other'/></xs:choice>
      </xs:extension></xs:complexContent></xs:complexType>
      <xs:complexType name='less'><xs:complexContent><xs:restriction base='t:base'>
        <xs:sequence/></xs:restriction></xs:complexContent></xs:complexType>
      <xs:element name='r'><xs:complexType mixed='true'><xs:sequence maxOccurs='unbounded'>
        <xs:group ref='t:g'/><xs:element ref='t:inc'/><xs:element name='more' type='t:more'/>
        <xs:element name='less' type='t:less'/><xs:element ref='o:y' minOccurs='2' maxOccurs='3'/>
      </xs:sequence></xs:complexType></xs:element>
      <xs:element name='all'><xs:complexType><xs:all>
        <xs:element name='more' type='t:less'/><xs:element ref='t:m2' minOccurs='0'/></xs:all></xs:complexType>
      </xs:element>
      <xs:element name='recursive' type='t:rec'/>
      <xs:complexType name='rec'><xs:sequence><xs:element name='recursive' type='t:rec'/></xs:sequence></xs:complexType>
    )"));
    const SchemaReadResult read = readXmlSchema(file);
    const Vocabulary& v = *read.vocabulary;
    EXPECT_EQ(messagesOf(read), "");
    EXPECT_EQ(read.files.size(), 4u);
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"r", "text (deep, {}bare, inc, more, less, {urn:o}y{2,3})+"},
        {u"deep", "{urn:o}x?"},
        {u"more", "(({urn:o}x?, (m1 | m2 | *{!urn:t }){1,10000}) | ())"}, // two types of one name
        {u"less", "()"},
        {u"all", "(more & m2?)"},
        {u"recursive", "recursive"},
        {u"inc", "text *{!}*"},
        {u"head", "not there"},
    };
    for (const auto& [name, content] : cases)
        EXPECT_EQ(contentOf(v, u"urn:t", name), content);
    EXPECT_NE(v.findElement(u"", u"bare"), -1);
    EXPECT_EQ(v.prefixOf(u"urn:o"), u"o");
    const std::string roots = " " + rootsOf(v) + " ";
    for (const char* root : {" r ", " m1 ", " inc ", " x ", " all "})
        EXPECT_NE(roots.find(root), std::string::npos) << root;
    for (const char* local : {" deep ", " head ", " bare "})
        EXPECT_EQ(roots.find(local), std::string::npos) << local;
}

TEST(XmlSchemaReader, offersValuesOfAttributes) {
    const SchemaFolder folder;
    const auto file = folder.write("t.xsd", schema(R"(
      <xs:import namespace='http://www.w3.org/XML/1998/namespace' schemaLocation='http://www.w3.org/2001/xml.xsd'/>
      <xs:simpleType name='size'><xs:restriction base='xs:string'>
        <xs:enumeration value='s'><xs:annotation><xs:documentation>Small.</xs:documentation></xs:annotation></xs:enumeration>
        <xs:enumeration value='l'/></xs:restriction></xs:simpleType>
      <xs:simpleType name='sizes'><xs:list itemType='t:size'/></xs:simpleType>
      <xs:simpleType name='any'><xs:union memberTypes='t:sizes xs:boolean'><xs:simpleType>
        <xs:restriction base='xs:int'><xs:minInclusive value='1'/><xs:maxInclusive value='9'/></xs:restriction>
      </xs:simpleType></xs:union></xs:simpleType>
      <xs:complexType name='abstract' abstract='true'><xs:attribute name='u'/></xs:complexType>
      <xs:complexType name='real'><xs:complexContent><xs:extension base='t:abstract'/></xs:complexContent></xs:complexType>
      <xs:element name='typed' type='t:abstract' nillable='true'/>
      <xs:element name='r'><xs:annotation><xs:documentation xml:lang='de'>Wurzel.</xs:documentation>
        <xs:documentation xml:lang='en'>The
          root.</xs:documentation></xs:annotation>
        <xs:complexType><xs:attribute name='a' type='t:any' use='required'/><xs:attribute name='f' fixed='1.0'/>
          <xs:attribute name='d' type='xs:date' default='2024-01-01'/><xs:attribute name='g' type='xs:string' use='prohibited'/>
          <xs:attribute ref='xml:space' default='preserve'/></xs:complexType></xs:element>
    )"));
    const SchemaReadResult read = readXmlSchema(file);
    const Vocabulary& v = *read.vocabulary;
    EXPECT_EQ(messagesOf(read), "");
    ASSERT_GE(v.findElement(u"urn:t", u"r"), 0);
    const std::string attributes = attributesOf(v, u"urn:t", u"r");
    for (const char* expected : {"a!=s(Small.)|l|true|false|<a whole number from 1 to 9>", "f^=1.0",
                                 "d^=<a date, as 2024-12-31>|2024-01-01", "space^=default|preserve"})
        EXPECT_NE(attributes.find(expected), std::string::npos) << expected << " in " << attributes;
    EXPECT_EQ(attributes.find(" g"), std::string::npos);
    EXPECT_EQ(v.element(v.findElement(u"urn:t", u"r")).documentation, u"The root.");
    EXPECT_EQ(attributesOf(v, u"urn:t", u"typed"),
              "u {http://www.w3.org/2001/XMLSchema-instance}nil=true|false "
              "{http://www.w3.org/2001/XMLSchema-instance}type!=t:real");
}

TEST(XmlSchemaReader, usesWhatItCanReadOfABrokenSchema) {
    const SchemaFolder folder;
    const auto unfinished = folder.write(
        "a.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>\n<xs:element name='ok'/>\n"
                 "<xs:element name='cut'></xs:schema>");
    const SchemaReadResult cut = readXmlSchema(unfinished);
    EXPECT_NE(cut.vocabulary->findElement(u"", u"ok"), -1);
    ASSERT_FALSE(cut.messages.empty());
    EXPECT_EQ(cut.messages[0].line, 3);
    EXPECT_GT(cut.messages[0].column, 0);

    const auto wrong = folder.write("b.xsd", "<!DOCTYPE xs:schema [\n<!ENTITY e 'named'>\n]>\n"
                                             "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema'>\n"
                                             "<xs:element name='&e;'/>\n<xs:element\nname='x'\n"
                                             "type='missing'/></xs:schema>");
    const SchemaReadResult read = readXmlSchema(wrong);
    EXPECT_NE(read.vocabulary->findElement(u"", u"named"), -1);
    EXPECT_EQ(messagesOf(read), "b.xsd:8:0: type ':missing' not found\n")
        << "lines survive the document type";

    const SchemaReadResult other = readXmlSchema(folder.write("c.xsd", "<html/>"));
    EXPECT_EQ(messagesOf(other),
              "c.xsd:1:0: The document is no XML Schema: its first element is \"html\".\n");
    EXPECT_EQ(messagesOf(readXmlSchema(folder.path() / "none.xsd")),
              ":0:0: The file " + (folder.path() / "none.xsd").string() +
                  " was not read: it does not exist.\n");
}

TEST(XmlSchemaReader, patternsGoWithoutATrace) {
    const SchemaFolder folder;
    const auto typed = [](std::string_view pattern) {
        return "<xs:element name='r'><xs:complexType><xs:attribute name='k'><xs:simpleType>"
               "<xs:restriction base='xs:string'>" +
               std::string(pattern) +
               "<xs:enumeration value='one'/></xs:restriction></xs:simpleType></xs:attribute>"
               "</xs:complexType></xs:element>\n<xs:element name='x'\ntype='missing'/>";
    };
    for (const std::string_view pattern : {
             "<xs:pattern value='two'/>",
             "<xs:pattern\nvalue=\"a>'/>\" />",
             "<xs:pattern value='>'><xs:annotation><!-- </xs:pattern> --><xs:documentation>"
             "<![CDATA[</xs:pattern>]]></xs:documentation></xs:annotation></xs:pattern >",
             "<!-- <xs:pattern> --><p:pattern xmlns:p='http://www.w3.org/2001/XMLSchema' value='(('/>",
             "<xs:annotation><xs:appinfo><pattern xmlns=''/></xs:appinfo></xs:annotation>",
         }) {
        const SchemaReadResult read = readXmlSchema(folder.write("t.xsd", schema(typed(pattern))));
        EXPECT_EQ(attributesOf(*read.vocabulary, u"urn:t", u"r"), "k=one") << pattern;
        ASSERT_EQ(read.messages.size(), 1u) << pattern << messagesOf(read);
        const auto lines = std::ranges::count(pattern, '\n');
        EXPECT_EQ(read.messages[0].line, 3 + lines) << pattern;
        EXPECT_GT(read.messages[0].column, 0) << pattern;
    }
}

TEST(XmlSchemaReader, asksTheResolverFirst) {
    const SchemaFolder folder;
    const auto local =
        folder.write("local.xsd", schema("<xs:element name='far'/>", "targetNamespace='urn:o'"));
    const auto file = folder.write(
        "t.xsd", schema("<xs:import namespace='urn:o' schemaLocation='http://example.invalid/far.xsd'/>"
                        "<xs:element name='r'/>"));
    SchemaReadOptions options;
    options.resolve = [&](const SchemaReference& reference) -> std::optional<std::filesystem::path> {
        EXPECT_EQ(reference.namespaceName, "urn:o");
        return reference.uri == "http://example.invalid/far.xsd" ? std::optional(local) : std::nullopt;
    };
    const SchemaReadResult found = readXmlSchema(file, options);
    EXPECT_EQ(messagesOf(found), "");
    EXPECT_NE(found.vocabulary->findElement(u"urn:o", u"far"), -1);

    const SchemaReadResult missing = readXmlSchema(file);
    EXPECT_NE(missing.vocabulary->findElement(u"urn:t", u"r"), -1) << "the rest is of use";
    ASSERT_EQ(missing.messages.size(), 1u);
    EXPECT_EQ(missing.messages[0].severity, SchemaMessage::Severity::warning);
    EXPECT_NE(missing.messages[0].text.find("systemId=\"http://example.invalid/far.xsd\""),
              std::string::npos);
}

TEST(SchemaReaders, readAtTheSameTimeAndStopWhenAsked) {
    const SchemaFolder folder;
    const auto xsd = folder.write("t.xsd", schema("<xs:element name='r' type='xs:int'/>"));
    const auto rng = folder.write(
        "t.rng", "<element name='r' xmlns='http://relaxng.org/ns/structure/1.0'><text/></element>");
    const auto dtd = folder.write("t.dtd", "<!ELEMENT r (#PCDATA)>");
    std::vector<std::jthread> threads;
    for (const auto& file : {xsd, rng, dtd, xsd})
        threads.emplace_back([file] {
            for (int i = 0; i < 20; ++i)
                EXPECT_EQ(readSchema(file, schemaLanguageOf(file)).vocabulary->roots().size(), 1u) << file;
        });
    threads.clear();
    std::stop_source stop;
    stop.request_stop();
    for (const auto& file : {xsd, rng, dtd}) {
        const auto read = readSchema(file, schemaLanguageOf(file), {.stop = stop.get_token()});
        EXPECT_EQ(messagesOf(read), ":0:0: Reading the schema was given up.\n") << file;
    }
}

TEST(SchemaReaders, languageIsToldByEndingThenByContent) {
    const SchemaFolder folder;
    using enum SchemaLanguage;
    EXPECT_EQ(schemaLanguageOf("some/where.XSD"), xmlSchema);
    EXPECT_EQ(schemaLanguageOf("where.rng"), relaxNg);
    EXPECT_EQ(schemaLanguageOf("where.dtd"), dtd);
    EXPECT_EQ(schemaLanguageOf(folder.write("a", schema(""))), xmlSchema);
    EXPECT_EQ(schemaLanguageOf(folder.write("b", "<grammar xmlns='http://relaxng.org/ns/structure/1.0'/>")),
              relaxNg);
    EXPECT_EQ(schemaLanguageOf(folder.path() / "none"), dtd);
}

} // namespace
} // namespace tavrin
