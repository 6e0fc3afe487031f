#include "SchemaWorld.h"

namespace tavrin {
namespace {

constexpr const char16_t* instance = u"xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' ";

/// The children that <r> of namespace urn:n (prefix p) is offered: the name tells which schema answered.
std::string whoAnswers(SchemaWorld& world) {
    return list(world.at({{u"p", u"urn:n"}})->getChildElements(u"urn:n", u"r"));
}

TEST(SchemaAssociation, theFirstOriginAnswersForANamespace) {
    // All at once, then the first is taken away, and so on.
    SchemaWorld world("doc.toy");
    for (const char* name :
         {"host", "user", "location", "model", "doctype", "rule", "root", "pattern", "catalog"})
        world.write(std::string(name) + ".xsd", "ns p urn:n\nroot r " + std::string(name) + "\nel " + name);
    world.write("catalog.xml",
                "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'>"
                "<uri name='urn:n' uri='catalog.xsd'/><public publicId='P' uri='doctype.xsd'/></catalog>");
    using enum SchemaRule::Kind;
    const std::string folder = world.folder.string() + '/';
    world.preferences.rules = {{namespaceName, "urn:n", folder + "rule.xsd"},
                               {rootElement, "r", folder + "root.xsd"},
                               {filePattern, "*.to?", "file://" + folder + "pattern.xsd"}};
    const std::u16string doctype = u"<!DOCTYPE r PUBLIC 'P' 'http://nowhere.invalid/x.dtd'>";
    const std::u16string model = u"<?xml-model href='model.xsd'?>";
    const std::u16string location = instance + std::u16string(u"xsi:schemaLocation='urn:n location.xsd'");
    const auto root = [](const std::u16string& attributes) {
        return u"<p:r xmlns:p='urn:n' " + attributes + u">";
    };

    world.text = model + doctype + root(location);
    world.document().bind(world.folder / "user.xsd", SchemaOrigin::user);
    world.document().bind(world.folder / "host.xsd", SchemaOrigin::host);
    EXPECT_EQ(whoAnswers(world), "p:host");
    EXPECT_EQ(world.reads, 5) << "neither map nor catalog is needed";
    EXPECT_TRUE(world.document().unbind(world.folder / "host.xsd", SchemaOrigin::host));
    EXPECT_FALSE(world.document().unbind(world.folder / "host.xsd", SchemaOrigin::host));
    EXPECT_EQ(whoAnswers(world), "p:user");
    world.document().setBound({});
    EXPECT_EQ(whoAnswers(world), "p:location");
    world.text = model + doctype + root(u"");
    EXPECT_EQ(whoAnswers(world), "p:model");
    world.text = doctype + root(u"");
    EXPECT_EQ(whoAnswers(world), "p:doctype");
    world.text = root(u"");
    EXPECT_EQ(whoAnswers(world), "p:rule");
    SchemaPreferences preferences = world.preferences;
    const char* names[] = {"p:root", "p:pattern", "p:catalog"};
    for (const char* name : names) {
        preferences.rules.erase(preferences.rules.begin());
        world.library().setPreferences(preferences);
        EXPECT_EQ(whoAnswers(world), name);
        if (preferences.rules.empty())
            break;
    }
    EXPECT_EQ(whoAnswers(world), "p:catalog");
    world.write("catalog.xml", "<catalog/>");
    EXPECT_EQ(whoAnswers(world), "") << "the catalog has changed on disk";
}

TEST(SchemaAssociation, everyDecisionTellsItsReasonAndProblem) {
    SchemaWorld world;
    world.write("own.xsd", "ns - urn:n\nroot r");
    world.text = u"<?xml-model href='x.rnc'?><?xml-model href='http://nowhere.invalid/x.rng'?>"
                 u"<!DOCTYPE r [<!ELEMENT r ANY>]><r xmlns='urn:n' " +
                 std::u16string(instance) + u"xsi:schemaLocation='urn:n own.xsd urn:gone gone.xsd'>";
    (void)world.at();
    const auto decisions = world.document().decisions();
    ASSERT_EQ(decisions.size(), 7u);
    EXPECT_EQ(decisions[0].answersFor, std::vector<std::u16string>{u"urn:n"});
    EXPECT_EQ(decisions[0].candidate.reason, "the document's xsi:schemaLocation");
    ASSERT_TRUE(decisions[1].schema);
    EXPECT_EQ(decisions[1].schema->state, SchemaState::failed);
    EXPECT_EQ(decisions[1].schema->messages.at(0).text, "can't be read");
    EXPECT_NE(decisions[2].candidate.problem.find("compact syntax"), std::string::npos);
    EXPECT_NE(decisions[3].candidate.problem.find("nothing is fetched"), std::string::npos);
    EXPECT_NE(decisions[3].candidate.problem.find("<uri name=\"http://nowhere.invalid/x.rng\""),
              std::string::npos);
    ASSERT_TRUE(decisions[4].candidate.request);
    EXPECT_EQ(decisions[4].candidate.request->doctype, u"<!DOCTYPE r [<!ELEMENT r ANY>]>");
    EXPECT_EQ(decisions[4].answersFor, std::vector<std::u16string>{u""});
    EXPECT_TRUE(decisions[6].candidate.builtIn);
}

TEST(SchemaAssociation, aSchemaGivenForANamespaceComesBeforeOneThatImportsIt) {
    SchemaWorld world;
    world.write("a.xsd", "ns a urn:a\nroot r q{urn:b}s\nns b urn:b\nel s ofA\nel ofA");
    world.write("b.xsd", "ns b urn:b\nroot s ofB\nel ofB");
    world.text = u"<r " + std::u16string(instance) + u"xsi:schemaLocation='urn:a a.xsd urn:b b.xsd'>";
    const auto service = world.at({{u"a", u"urn:a"}, {u"b", u"urn:b"}});
    EXPECT_EQ(list(service->getChildElements(u"urn:a", u"r")), "b:s");
    EXPECT_EQ(list(service->getChildElements(u"urn:b", u"s")), "b:ofB");
}

TEST(SchemaService, rootsAreThoseThatAnAuthorWants) {
    struct Case {
        const char* file;
        const char16_t* text;
        const char* bound; ///< empty: none
        const char* roots;
    };
    const Case cases[] = {
        {"doc.xml", u"", "", "xsl:stylesheet fo:root"},
        {"", u"", "", "xsl:stylesheet fo:root"},
        {"a.xsl", u"", "", "xsl:stylesheet"},
        {"a.fo", u"", "", "fo:root"},
        {"doc.xml", u"", "two.xsd", "one two"},
        {"doc.xml", u"<!DOCTYPE two SYSTEM 'two.xsd'>", "", "two"},
        {"doc.xml", u"<!DOCTYPE new SYSTEM 'two.xsd'>", "", "one two"},
        {"doc.xml", u"<?xml-model href='gone.xsd'?>", "", "xsl:stylesheet fo:root"},
    };
    for (const Case& c : cases) {
        SchemaWorld world(c.file);
        world.write("two.xsd", "ns - -\nroot one\nroot two\nel three");
        world.text = c.text;
        if (*c.bound)
            world.document().bind(world.folder / c.bound);
        EXPECT_EQ(list(world.at()->getRootElements()), c.roots) << c.file << toUtf8(c.text);
    }
    SchemaWorld world;
    const auto second = world.at({}, {{u"", u"done"}});
    EXPECT_EQ(list(second->getRootElements()), "(xsl:stylesheet) (fo:root)") << "there is a root already";
}

TEST(SchemaService, prefixesAreTheDocumentsThenTheVocabularys) {
    using Bindings = SchemaWorld::Bindings;
    SchemaWorld world;
    world.write("a.xsd", "ns a urn:a\nroot r e q{}plain q{urn:b}f @!id @!xlink:href\nel e\nns - urn:b\nel "
                         "f\nns - -\nel plain");
    world.document().bind(world.folder / "a.xsd");
    const std::u16string fo(xslFoNamespace);
    const std::u16string xlink = u"http://www.w3.org/1999/xlink";
    struct Case {
        Bindings bindings;
        const char* children;
        const char* attributes;
        const char16_t* result; ///< the template of r
    };
    const Case cases[] = {
        {{}, "a:e plain f", "id! xlink:href!", u"xmlns:a=\"urn:a\" id=\"*\" xlink:href=\"\">\n_\n</a:r>"},
        {{{u"z", u"urn:a"}, {u"l", xlink}},
         "z:e plain f",
         "id! l:href!",
         u"id=\"*\" l:href=\"\">\n_\n</z:r>"},
        {{{u"", u"urn:a"}, {u"z", u"urn:a"}, {u"", xlink}},
         "e plain f",
         "id! xlink:href!",
         u"id=\"*\" xlink:href=\"\">\n_\n</r>"},
        {{{u"b", u"urn:b"}},
         "a:e plain b:f",
         "id! xlink:href!",
         u"xmlns:a=\"urn:a\" id=\"*\" xlink:href=\"\">\n_\n</a:r>"},
    };
    for (const Case& c : cases) {
        const auto service = world.at(c.bindings);
        EXPECT_EQ(list(service->getChildElements(u"urn:a", u"r")), c.children);
        EXPECT_EQ(list(service->getElementAttributes(u"urn:a", u"r")), c.attributes);
        std::u16string text = service->getElementTemplate(u"urn:a", u"r");
        EXPECT_EQ(toUtf8(text).substr(0, toUtf8(c.result).find('>')),
                  toUtf8(c.result).substr(0, toUtf8(c.result).find('>')));
    }
    const auto bare = world.at();
    EXPECT_EQ(bare->getElementTemplate(fo, u"block").find(u"xmlns"), std::u16string::npos) << "fo needs none";
    EXPECT_EQ(bare->getElementTemplate(u"urn:b", u"f"), u"xmlns=\"urn:b\"/>*");
    EXPECT_EQ(bare->getElementTemplate(u"urn:b", u"unknown"), u"");
    EXPECT_EQ(world.at(Bindings{{u"fo", u"urn:else"}})->getElementTemplate(fo, u"block").substr(0, 8),
              u"xmlns:fo");
}

TEST(SchemaService, wildcardsLetInTheOtherVocabularies) {
    SchemaWorld world;
    world.write("host.xsd", "ns h urn:h\nroot host own *\nel own");
    world.write("guest.xsd", "ns g urn:g\nroot guest part\nel part");
    world.document().bind(world.folder / "host.xsd");
    world.document().bind(world.folder / "guest.xsd");
    const std::pair<std::u16string, std::u16string> xsl{u"xsl", xsltNamespace}, fo{u"fo", xslFoNamespace};
    const std::pair<std::u16string, std::u16string> h{u"h", u"urn:h"}, g{u"g", u"urn:g"};
    const std::u16string xslt(xsltNamespace), formatting(xslFoNamespace);
    struct Case {
        SchemaWorld::Bindings bindings;
        std::u16string space, name;
        const char* children;
    };
    const Case cases[] = {
        {{h, g}, u"urn:h", u"host", "h:own g:guest"},
        {{h, g}, u"urn:g", u"guest", "g:part"},
        {{h, g, fo}, u"urn:h", u"host", "h:own fo:root g:guest"}, // what is built in comes when it is bound
        {{h, g, xsl}, xslt, u"template", "xsl:param xsl:if g:part g:guest h:own h:host"},
        {{xsl, fo, h, g}, xslt, u"template", "xsl:param xsl:if g:part g:guest h:own h:host"}, // no partner
        {{fo, xsl}, formatting, u"block", "fo:block g:guest h:host"},
        {{h, g, xsl}, u"urn:g", u"guest", "g:part xsl:if"}, // a literal result element
        {{xsl}, u"", u"div", "xsl:if"},
        {{h}, u"", u"div", ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(list(world.at(c.bindings)->getChildElements(c.space, c.name)), c.children)
            << toUtf8(c.space) << ' ' << toUtf8(c.name) << ' ' << c.bindings.size();
    EXPECT_EQ(list(world.at({h, {u"t", xslt}})->getElementAttributes(u"urn:h", u"own")),
              "t:exclude-result-prefixes t:extension-element-prefixes t:use-attribute-sets t:version");
}

TEST(SchemaService, roomFollowsTheSiblings) {
    SchemaWorld world;
    world.write("a.xsd", "ns - -\nroot r a b c\nel a\nel b\nel c");
    world.document().bind(world.folder / "a.xsd");
    const auto room = [&](std::vector<ExpandedName> before, std::vector<ExpandedName> after) {
        const auto service =
            world.at({{u"xsl", std::u16string(xsltNamespace)}}, std::move(before), std::move(after));
        return list(service->getChildElements(u"", u"r"));
    };
    EXPECT_EQ(room({{u"", u"b"}}, {}), "(a) b c xsl:if");
    EXPECT_EQ(room({}, {{u"", u"b"}}), "a b (c) xsl:if");
    EXPECT_EQ(room({{u"", u"b"}, {std::u16string(xsltNamespace), u"if"}}, {}), "(a) b c xsl:if");
    const std::u16string xslt(xsltNamespace), formatting(xslFoNamespace);
    const auto service = world.at();
    EXPECT_EQ(list(service->getChildElements(xslt, u"if")), "xsl:if");
    EXPECT_EQ(list(service->getNamespaceElements(formatting)), "(fo:block) (fo:root)")
        << "nothing foreign in the toy's xsl:if";
    (void)service->getChildElements(xslt, u"template");
    EXPECT_EQ(list(service->getNamespaceElements(formatting)), "fo:block fo:root");
    (void)service->getChildElements(formatting, u"block");
    EXPECT_EQ(list(service->getNamespaceElements(xslt)).find('('), std::string::npos);
}

TEST(SchemaService, valuesGoByNamespaceAndNameAsWritten) {
    SchemaWorld world;
    world.write("a.xsd", "ns a urn:a\nroot r @kind=x,y @xlink:show=new,none\nel s @kind=y,z");
    world.document().bind(world.folder / "a.xsd");
    world.text = u"<a:r xmlns:a='urn:a'>";
    const auto service = world.at({{u"a", u"urn:a"},
                                   {u"l", u"http://www.w3.org/1999/xlink"},
                                   {u"i", std::u16string(schemaInstanceNamespace)}});
    EXPECT_EQ(list(service->getAttributeValues(u"urn:a", u"kind")), "x y z");
    EXPECT_EQ(list(service->getAttributeValues(u"urn:a", u"l:show")), "new none");
    EXPECT_EQ(list(service->getAttributeValues(u"urn:a", u"show")), "");
    EXPECT_EQ(list(service->getAttributeValues(u"urn:else", u"kind")), "");
    EXPECT_EQ(list(service->getAttributeValues(u"", u"i:nil")), "true false");
    EXPECT_EQ(list(service->getAttributeValues(u"", u"xmlns:x")),
              "http://www.w3.org/1999/XSL/Format http://www.w3.org/1999/XSL/Transform urn:a");
    EXPECT_EQ(list(service->getElementAttributes(u"urn:a", u"r")),
              "kind l:show i:nil i:type i:noNamespaceSchemaLocation i:schemaLocation");
    EXPECT_EQ(list(service->getElementAttributes(u"urn:a", u"s")), "kind i:nil i:type");
}

TEST(DocumentSchemas, aDtdGivesNamespacesThatTheTextDoesNotShow) {
    SchemaWorld world;
    world.write("x.dtd", "ns - urn:x\nroot html body\nel body @dir=ltr,rtl");
    world.text = u"<!DOCTYPE html SYSTEM 'x.dtd'><html>";
    const auto service = world.at();
    EXPECT_EQ(list(service->getChildElements(u"", u"html")), "body");
    EXPECT_EQ(list(service->getElementAttributes(u"", u"body")), "dir");
    EXPECT_EQ(list(service->getAttributeValues(u"", u"dir")), "ltr rtl");
    EXPECT_EQ(service->getElementTemplate(u"urn:x", u"body"), u"/>*");
}

TEST(DocumentSchemas, whatStandsBeyondTheBeginningIsNotSeen) {
    SchemaWorld world;
    world.write("n.xsd", "ns - -\nroot r");
    const std::u16string root = u"<r " + std::u16string(instance) + u"xsi:noNamespaceSchemaLocation='n.xsd'>";
    world.text = u"<!--" + std::u16string(DocumentSchemas::longestBeginning / 2, u'x') + u"-->" + root;
    (void)world.at();
    EXPECT_EQ(world.reads, 1);
    world.text = u"<!--" + std::u16string(DocumentSchemas::longestBeginning, u'x') + u"-->" + root;
    EXPECT_EQ(list(world.at()->getRootElements()), "xsl:stylesheet fo:root");
}

} // namespace
} // namespace tavrin
