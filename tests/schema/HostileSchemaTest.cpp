#include "SchemaChecks.h"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

constexpr std::string_view xsd = "xmlns:xs='http://www.w3.org/2001/XMLSchema'";
constexpr std::string_view rng = "xmlns='http://relaxng.org/ns/structure/1.0'";

std::string repeated(std::string_view text, int times) {
    std::string result;
    result.reserve(text.size() * static_cast<std::size_t>(times));
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

/// Each occurrence of "#" becomes the number, of "@" the next one.
std::string numbered(std::string_view text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i)
        for (const char c : text)
            result += c == '#' ? std::to_string(i) : c == '@' ? std::to_string(i + 1) : std::string(1, c);
    return result;
}

/// Declarations of entities, each ten times the one before; the last, "e9", stands for 10^10 bytes.
std::string bomb() {
    return "<!ENTITY e0 'xxxxxxxxxx'>" + numbered("<!ENTITY e@ '" + repeated("&e#;", 10) + "'>", 9);
}

/// An include or import stands before all else.
std::string xmlSchema(std::string_view content, std::string_view doctype = {}, std::string_view first = {}) {
    return std::string(doctype) + "<xs:schema " + std::string(xsd) + ">" + std::string(first) +
           "<xs:element name='ok'/>" + std::string(content) + "</xs:schema>";
}

std::string relaxNg(std::string_view content, std::string_view doctype = {}) {
    return std::string(doctype) + "<grammar " + std::string(rng) + "><start><element name='ok'>" +
           std::string(content) + "</element></start></grammar>";
}

struct Case {
    std::string name;
    std::string text;
    const char* message;  ///< a part of it; empty when there may be none
    bool isUsable = true; ///< the element "ok" is read all the same
};

void check(const std::vector<Case>& cases) {
    const SchemaFolder folder;
    folder.write("secret.txt", "the secret");
    for (const Case& c : cases)
        folder.write(c.name, c.text);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto file = folder.path() / c.name;
        const SchemaReadResult read = readSchema(file, schemaLanguageOf(file));
        EXPECT_NE(messagesOf(read).find(c.message), std::string::npos) << messagesOf(read);
        EXPECT_EQ(messagesOf(read).find("the secret"), std::string::npos);
        const bool isUsable = read.vocabulary->findElement(u"", u"ok") >= 0;
        EXPECT_EQ(isUsable, c.isUsable) << messagesOf(read);
    }
}

constexpr const char* tooMuch = "stand for far too much text";
constexpr const char* noNetwork = "nothing is fetched from a network";

TEST(HostileSchema, entitiesNeitherGrowNorReadFiles) {
    const std::string bombs = "<!DOCTYPE s [" + bomb() + "]>";
    const std::string secret = "<!DOCTYPE s [<!ENTITY e SYSTEM 'secret.txt'>]>";
    const std::string elements = "<!DOCTYPE s [<!ENTITY e0 '" + repeated("<x/>", 1000) + "'>" +
                                 numbered("<!ENTITY e@ '" + repeated("&e#;", 100) + "'>", 3) + "]>";
    check({
        {"text.xsd",
         xmlSchema("<xs:annotation><xs:documentation>&e9;</xs:documentation></xs:annotation>", bombs),
         tooMuch},
        {"attribute.xsd", xmlSchema("<xs:element name='x' type='&e9;'/>", bombs), tooMuch},
        {"elements.xsd", xmlSchema("&e3;", elements), "was left out"},
        {"include.xsd", xmlSchema("", "", "<xs:include schemaLocation='attribute.xsd'/>"), tooMuch},
        {"secret.xsd",
         xmlSchema("<xs:annotation><xs:documentation>&e;</xs:documentation></xs:annotation>", secret),
         "no external entities"},
        {"attribute.rng", relaxNg("<attribute name='&e9;'/>", bombs), tooMuch},
        {"secret.rng", relaxNg("<value>&e;</value>", secret), "no external entities"},
        {"attribute.dtd", bomb() + "<!ELEMENT ok EMPTY><!ATTLIST ok a CDATA '&e9;'>", tooMuch},
        {"parameter.dtd",
         "<!ELEMENT ok EMPTY><!ENTITY % e0 '(b|b)'>" +
             numbered("<!ENTITY % e@ '(%e#;|%e#;|%e#;|%e#;|%e#;|%e#;|%e#;|%e#;)'>", 9) + "<!ELEMENT x %e9;>",
         tooMuch},
        {"secret.dtd", "<!ELEMENT ok EMPTY><!ENTITY e SYSTEM 'secret.txt'><!ATTLIST ok a CDATA '&e;'>",
         "ternal entity"},
    });
}

TEST(HostileSchema, cyclesAndDepthEnd) {
    const auto deep = [](const char* open, const char* close) {
        return repeated(open, 100'000) + repeated(close, 100'000);
    };
    constexpr const char* tooDeep = "deeper in one another";
    check({
        {"cycle.xsd",
         xmlSchema("<xs:group name='g'><xs:sequence>"
                   "<xs:group ref='g'/></xs:sequence></xs:group>",
                   "", "<xs:include schemaLocation='cycle2.xsd'/>"),
         "circular"},
        {"cycle2.xsd",
         "<xs:schema " + std::string(xsd) + "><xs:include schemaLocation='cycle.xsd'/></xs:schema>", ""},
        {"cycle.rng", relaxNg("<externalRef href='cycle.rng'/>"), "takes in itself"},
        {"cycle.dtd", "<!ELEMENT ok EMPTY><!ENTITY % c SYSTEM 'cycle.dtd'>%c;", "Redefinition"},
        {"entity-cycle.dtd", "<!ELEMENT ok EMPTY><!ENTITY % a '&#37;b;'><!ENTITY % b '&#37;a;'>%a;",
         "refer to themselves"},
        {"deep.xsd", xmlSchema(deep("<xs:sequence>", "</xs:sequence>")), tooDeep},
        {"deep.rng", relaxNg(deep("<group>", "</group>")), tooDeep},
        {"deep.dtd", "<!ELEMENT ok EMPTY><!ELEMENT x " + deep("(", ")") + ">", "too deep"},
        {"chain.xsd",
         xmlSchema(numbered("<xs:element name='e#'><xs:complexType><xs:sequence><xs:element ref='e@'/>"
                            "</xs:sequence></xs:complexType></xs:element>",
                            30'000)),
         "", false},
        {"chain.rng",
         "<grammar " + std::string(rng) + "><start><element name='ok'><ref name='d0'/></element></start>" +
             numbered("<define name='d#'><ref name='d@'/></define>", 30'000) + "</grammar>",
         "too long chains"},
    });
}

TEST(HostileSchema, combinationsAndSizesAreLimited) {
    const std::string doubling = "<xs:group name='g#'><xs:sequence><xs:group ref='g@'/><xs:group ref='g@'/>"
                                 "</xs:sequence></xs:group>";
    const std::string pairs = "<define name='d#'><choice><ref name='d@'/><ref name='d@'/></choice></define>";
    constexpr const char* tooMany = "elements and declarations";
    check({
        {"doubling.xsd",
         xmlSchema("<xs:element name='x'><xs:complexType><xs:group ref='g0'/></xs:complexType>"
                   "</xs:element>" +
                   numbered(doubling, 40) +
                   "<xs:group name='g40'><xs:sequence><xs:element name='y'/></xs:sequence></xs:group>"),
         "bytes of memory", false},
        {"occurs.xsd",
         xmlSchema("<xs:element name='x'><xs:complexType><xs:choice minOccurs='9999' maxOccurs='10000'>"
                   "<xs:element name='a' maxOccurs='99999'/><xs:element "
                   "name='b'/></xs:choice></xs:complexType></xs:element>"),
         ""},
        {"doubling.rng",
         "<grammar " + std::string(rng) +
             "><start><element name='ok'><attribute name='a'><ref name='d0'/>"
             "</attribute><ref name='d0'/></element></start>" +
             numbered(pairs, 60) + "<define name='d60'><value>v</value></define></grammar>",
         ""},
        {"elements.xsd", xmlSchema(repeated("<x/>", 1'000'000)), tooMany, false},
        {"elements.rng", relaxNg(repeated("<x/>", 1'000'000)), tooMany, false},
        {"names.dtd", "<!ELEMENT ok EMPTY><!ELEMENT x (" + repeated("b|", 4'000'000) + "b)>", tooMany, false},
        {"any.dtd", "<!ELEMENT ok EMPTY>" + numbered("<!ELEMENT e# ANY>", 20'000), "too many combinations"},
        {"attributes.xsd", "<xs:schema " + numbered("a#='' ", 100'000) + "/>", "attributes", false},
        {"large.xsd", repeated(" ", 50'000'000), "a schema may have", false},
        {"large.dtd", repeated(" ", 50'000'000), "a schema may have", false},
    });
}

/// Matching the values of the schema against them would never end, or overflow any stack.
TEST(HostileSchema, patternsAreNotTried) {
    std::vector<Case> cases;
    for (const char* pattern : {"(a|a)*b", "(a|aa)+b", "(a*)*b", "(.*.*.*.*.*.*.*.*)*b"}) {
        const std::string type = "<xs:simpleType><xs:restriction base='xs:string'><xs:pattern value='" +
                                 std::string(pattern) + "'/></xs:restriction></xs:simpleType>";
        const std::string schema = "<xs:element name='x'><xs:complexType><xs:attribute name='k' default='" +
                                   repeated("a", 10'000) + "'>" + type +
                                   "</xs:attribute></xs:complexType></xs:element>";
        const std::string number = std::to_string(cases.size());
        const std::string utf8 = xmlSchema(schema);
        std::string utf16 = "\xFF\xFE";
        for (const char c : utf8)
            utf16 += {c, '\0'};
        cases.push_back({"plain" + number + ".xsd", utf8, ""});
        cases.push_back({"doctype" + number + ".xsd", xmlSchema(schema, "<!DOCTYPE s>"), ""});
        cases.push_back({"utf16" + number + ".xsd", utf16, ""});
    }
    check(cases);
}

TEST(HostileSchema, nothingComesFromANetwork) {
    check({
        {"import.xsd",
         xmlSchema("", "", "<xs:import namespace='urn:o' schemaLocation='http://127.0.0.1:9/x.xsd'/>"),
         noNetwork},
        {"include.xsd", xmlSchema("", "", "<xs:include schemaLocation='https://example.invalid/x.xsd'/>"),
         noNetwork},
        {"include.rng", relaxNg("<externalRef href='http://127.0.0.1:9/x.rng'/>"), noNetwork},
        {"entity.dtd", "<!ENTITY % o PUBLIC '-//X//Y' 'http://127.0.0.1:9/x.dtd'>%o;<!ELEMENT ok EMPTY>",
         "<public publicId=\"-//X//Y\""},
        {"doctype.xsd", xmlSchema("", "<!DOCTYPE s SYSTEM 'http://127.0.0.1:9/x.dtd'>"), ""},
    });
}

} // namespace
} // namespace tavrin
