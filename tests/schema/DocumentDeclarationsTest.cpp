#include "platform/schema/DocumentDeclarations.h"

#include "platform/core/XmlNamespaces.h"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

TEST(DocumentDeclarations, readsPrologAndRootStartTag) {
    const auto read = readDeclarations(uR"(<?xml version="1.0"?>
<!-- <!DOCTYPE no> <no> -->
<?xml-model href="a&amp;b.rng" schematypens='http://relaxng.org/ns/structure/1.0'?>
<!DOCTYPE d:book PUBLIC "-//X//DTD
  Book//EN" 'http://x/book.dtd' [ <!-- ] --> <!ENTITY e "]>"> <?p ]?> ] >
<d:book xmlns:d="urn:d" xmlns = 'urn:e' xmlns:i="http://www.w3.org/2001/XMLSchema-instance"
  i:schemaLocation="urn:d  d.xsd
 urn:e e.xsd urn:odd" i:noNamespaceSchemaLocation=" n.xsd " half><more/>)");
    ASSERT_TRUE(read.documentType);
    EXPECT_EQ(read.documentType->rootName, u"d:book");
    EXPECT_EQ(read.documentType->publicId, u"-//X//DTD Book//EN");
    EXPECT_EQ(read.documentType->systemId, u"http://x/book.dtd");
    EXPECT_EQ(read.documentType->internalSubset, u" <!-- ] --> <!ENTITY e \"]>\"> <?p ]?> ");
    EXPECT_TRUE(read.documentType->declaration.starts_with(u"<!DOCTYPE d:book"));
    EXPECT_TRUE(read.documentType->declaration.ends_with(u"] >"));
    ASSERT_EQ(read.models.size(), 1u);
    EXPECT_EQ(read.models[0].href, u"a&b.rng");
    EXPECT_EQ(read.models[0].schemaTypeNamespace, u"http://relaxng.org/ns/structure/1.0");
    EXPECT_EQ(read.root, (ExpandedName{u"urn:d", u"book"}));
    EXPECT_EQ(read.bindings.size(), 3u);
    EXPECT_EQ(read.schemaLocations,
              (decltype(read.schemaLocations){{u"urn:d", u"d.xsd"}, {u"urn:e", u"e.xsd"}}));
    EXPECT_EQ(read.noNamespaceSchemaLocation, u"n.xsd");
    EXPECT_TRUE(read.isComplete);
}

TEST(DocumentDeclarations, anyTextIsReadWithoutHarm) {
    const std::u16string whole =
        u"<?xml-model href='m'?><!DOCTYPE a SYSTEM 's' [<!ENTITY x '>'>]><b:a x='&#x41;&no;' "
        u"xsi:noNamespaceSchemaLocation='l'>";
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const auto read = readDeclarations(std::u16string_view(whole).substr(0, length));
        EXPECT_LE(read.models.size(), 1u);
        EXPECT_FALSE(read.isComplete && length < whole.size());
    }
    EXPECT_EQ(readDeclarations(whole).noNamespaceSchemaLocation, u"l") << "xsi needs no declaration";
    EXPECT_EQ(readDeclarations(u"< \n<xsl:stylesheet>").root,
              (ExpandedName{std::u16string(xsltNamespace), u"stylesheet"}));
    EXPECT_FALSE(readDeclarations(u"</a>text<!x><1>").root);
}

} // namespace
} // namespace tavrin
