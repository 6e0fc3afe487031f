#include "SchemaWorld.h"

namespace tavrin {
namespace {

TEST(XmlCatalog, findsLocalFilesOnly) {
    SchemaWorld world;
    world.write("catalog.xml", R"(<?xml version="1.0"?>
<!DOCTYPE catalog PUBLIC "-//OASIS//DTD XML Catalogs V1.0//EN" "http://nowhere.invalid/catalog.dtd">
<catalog xmlns="urn:oasis:names:tc:entity:xmlns:xml:catalog">
  <public publicId="-//X//DTD
      One//EN" uri="one.dtd"/>
  <group prefer="system" xml:base="sub/"><public publicId="two" uri="two.dtd"/></group>
  <system systemId="http://x/s.dtd" uri="s%20s.dtd"/>
  <rewriteSystem systemIdStartString="http://x/" rewritePrefix="x/"/>
  <rewriteSystem systemIdStartString="http://x/long/" rewritePrefix="file:///long/"/>
  <systemSuffix systemIdSuffix="/end.dtd" uri="end.dtd"/>
  <uri name="urn:u" uri="u.xsd"/>
  <uri name="urn:far" uri="http://far/u.xsd"/>
  <delegateURI uriStartString="urn:d" catalog="d.xml"/>
  <nextCatalog catalog="next.xml"/>
  <nextCatalog catalog="http://nowhere.invalid/catalog"/>
  <other xmlns="urn:other"/>
</catalog>)");
    world.write("d.xml",
                "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'><uri name='urn:d:1' uri='d1'/>"
                "<nextCatalog catalog='catalog.xml'/></catalog>");
    world.write("next.xml", "<catalog>\n<");
    const std::vector<std::filesystem::path> first{world.folder / "catalog.xml"};
    const XmlCatalog catalog(first);
    struct Case {
        const char* publicId;
        const char* systemId;
        const char* uri;
        const char* file; ///< empty: none
    };
    const Case cases[] = {
        {"-//X//DTD One//EN ", "", "", "one.dtd"},
        {"-//X//DTD One//EN", "http://y/unknown", "", "one.dtd"},
        {"two", "", "", "sub/two.dtd"},
        {"two", "http://y/unknown", "", ""}, // the system identifier is preferred, and not known
        {"two", "http://x/s.dtd", "", "s s.dtd"},
        {"", "http://x/a/b.dtd", "", "x/a/b.dtd"},
        {"", "http://x/long/b.dtd", "", "/long/b.dtd"},
        {"", "http://y/end.dtd", "", "end.dtd"},
        {"", "", "urn:u", "u.xsd"},
        {"", "urn:u", "", ""},
        {"", "", "urn:far", ""},
        {"", "", "urn:d:1", "d1"},
        {"", "", "urn:d:2", ""}, // round in a circle
    };
    for (const Case& c : cases) {
        const auto found =
            *c.uri ? catalog.resolveUri(c.uri) : catalog.resolveExternal(c.publicId, c.systemId);
        EXPECT_EQ(found ? pathText(*found) : "", *c.file ? pathText(world.folder / c.file) : "")
            << c.publicId << ' ' << c.systemId << ' ' << c.uri;
    }
    ASSERT_EQ(catalog.messages().size(), 2u);
    EXPECT_NE(catalog.messages()[0].text.find("http://nowhere.invalid/catalog"), std::string::npos);
    EXPECT_EQ(catalog.messages()[1].line, 2);
    EXPECT_EQ(catalog.files().size(), 3u);
}

TEST(XmlCatalog, catalogsThatLeadToOneAnotherAreAskedOnce) {
    constexpr int count = 40;
    const auto pathAt = [](int i) { return "/catalogs/" + std::to_string(i); };
    const SchemaFiles contents = [&](const std::filesystem::path& file) -> std::optional<std::string> {
        std::string text = "<catalog xmlns='urn:oasis:names:tc:entity:xmlns:xml:catalog'>";
        for (int i = 0; i < count; ++i)
            text += "<delegateSystem systemIdStartString='urn:' catalog='" + pathAt(i) +
                    "'/><nextCatalog catalog='" + pathAt(i) + "'/>";
        if (file == pathAt(count - 1))
            text += "<system systemId='urn:x' uri='found.dtd'/>";
        return text + "</catalog>";
    };
    const std::vector<std::filesystem::path> first{pathAt(0)};
    const XmlCatalog catalog(first, contents);
    EXPECT_EQ(catalog.resolveExternal("-//X", "urn:x"), "/catalogs/found.dtd");
    EXPECT_EQ(catalog.resolveExternal("-//X", "urn:y"), std::nullopt);
}

} // namespace
} // namespace tavrin
