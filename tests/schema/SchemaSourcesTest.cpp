#include "platform/schema/SchemaSources.h"

#include "SchemaWorld.h"

namespace tavrin {
namespace {

/// A document whose schemas are read by the real readers.
class RealWorld {
  public:
    explicit RealWorld(const SchemaWorld& files)
        : folder(files.folder),
          library(thread, {.load = fileSchemaLoader(),
                           .builtIn = builtInVocabularies(),
                           .systemCatalogs = {folder / "catalog.xml"}}),
          document({.beginning = [this](std::size_t atMost) { return text.substr(0, atMost); },
                    .path = [this] { return folder / "doc.xml"; }},
                   library) {}

    SmartPtr<IXSchema> at(SchemaContext context) {
        for (int i = 0; i < 2; ++i) {
            (void)document.schemaAt(context);
            while (!library.isIdle())
                thread.waitAndRun();
        }
        return document.schemaAt(context);
    }

    std::filesystem::path folder;
    std::u16string text;
    QueuedEditorThread thread;
    SchemaLibrary library;
    DocumentSchemas document;
};

TEST(SchemaSources, schemasAreReadThroughTheCatalogs) {
    const SchemaWorld files("");
    files.write("catalog.xml", "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'>"
                               "<uri name='http://nowhere.invalid/part.xsd' uri='local.xsd'/>"
                               "<public publicId='-//T//D' uri='t.dtd'/></catalog>");
    files.write("main.xsd",
                "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' xmlns:m='urn:m' xmlns:p='urn:p' "
                "targetNamespace='urn:m' elementFormDefault='qualified'>"
                "<xs:import namespace='urn:p' schemaLocation='http://nowhere.invalid/part.xsd'/>"
                "<xs:import namespace='urn:q' schemaLocation='http://nowhere.invalid/other.xsd'/>"
                "<xs:element name='doc'><xs:complexType><xs:sequence><xs:element ref='p:part'/></xs:sequence>"
                "</xs:complexType></xs:element></xs:schema>");
    files.write("local.xsd", "<xs:schema xmlns:xs='http://www.w3.org/2001/XMLSchema' targetNamespace='urn:p'>"
                             "<xs:element name='part'/></xs:schema>");
    files.write("t.dtd",
                "<!ELEMENT t (u|v)*><!ELEMENT u EMPTY><!ELEMENT v EMPTY><!ATTLIST u k (a|b) #REQUIRED>");

    RealWorld world(files);
    world.text = u"<m:doc xmlns:m='urn:m' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
                 u"xsi:schemaLocation='urn:m main.xsd'>";
    EXPECT_EQ(list(world.at({.bindings = {{u"m", u"urn:m"}}, .siblingsBefore = {}, .siblingsAfter = {}})
                       ->getChildElements(u"urn:m", u"doc")),
              "p:part");
    const auto decisions = world.document.decisions();
    ASSERT_TRUE(decisions.at(0).schema);
    ASSERT_FALSE(decisions[0].schema->messages.empty()) << "the other import";
    EXPECT_NE(decisions[0].schema->messages[0].text.find("http://nowhere.invalid/other.xsd"),
              std::string::npos);
    EXPECT_EQ(decisions[0].schema->files.size(), 2u);

    world.text = u"<!DOCTYPE t PUBLIC '-//T//D' 'http://nowhere.invalid/t.dtd'><t>";
    const auto plain = world.at({});
    EXPECT_EQ(list(plain->getRootElements()), "t");
    EXPECT_EQ(list(plain->getChildElements(u"", u"t")), "u v");
    EXPECT_EQ(plain->getElementTemplate(u"", u"u"), u"k=\"*\"/>");

    world.text = u"<!DOCTYPE t PUBLIC '-//T//D' 'http://nowhere.invalid/t.dtd' "
                 u"[<!ELEMENT w EMPTY><!ATTLIST v own CDATA #IMPLIED>]><t>";
    const auto extended = world.at({});
    EXPECT_EQ(list(extended->getElementAttributes(u"", u"v")), "own");
    EXPECT_EQ(list(plain->getElementAttributes(u"", u"v")), "") << "each document has its own";
}

TEST(SchemaSources, stylesheetsNeedNoSetUp) {
    const SchemaWorld files("");
    RealWorld world(files);
    const std::u16string xslt(xsltNamespace), fo(xslFoNamespace);
    const auto service =
        world.at({.bindings = {{u"t", xslt}, {u"", fo}}, .siblingsBefore = {}, .siblingsAfter = {}});
    EXPECT_EQ(list(service->getChildElements(xslt, u"choose")), "t:when (t:otherwise)");
    EXPECT_TRUE(service->getElementTemplate(xslt, u"if").ends_with(u"</t:if>"));
    EXPECT_EQ(service->getElementTemplate(fo, u"root").find(u"xmlns"), std::u16string::npos);
    EXPECT_EQ(world.at({})->getElementTemplate(fo, u"root").substr(0, 9), u"xmlns:fo=");
    EXPECT_EQ(list(service->getAttributeValues(u"urn:any", u"t:version")), "1.0 a number");
}

} // namespace
} // namespace tavrin
