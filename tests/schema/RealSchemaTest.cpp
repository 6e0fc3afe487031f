#include "SchemaChecks.h"
#include "platform/schema/XmlCatalog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace tavrin {
namespace {

namespace fs = std::filesystem;

/// Vocabularies that many people write in, as Debian packages them.
struct Published {
    const char* file;
    const char16_t* space;
    const char16_t* element;
    const char* content;   ///< begins so
    const char* attribute; ///< among others
    std::size_t elements;
    std::size_t roots;
};

class RealSchema : public testing::TestWithParam<Published> {};

TEST_P(RealSchema, isReadWhole) {
    const Published& published = GetParam();
    const fs::path file = fs::path("/usr/share/xml") / published.file;
    if (!fs::exists(file))
        FAIL() << file << " is not installed: scripts/dependencies.sh test installs it";
    SchemaReadOptions options;
    options.limits.time = std::chrono::minutes(5);
    const XmlCatalog catalog(std::vector<fs::path>{"/etc/xml/catalog"});
    options.resolve = [&](const SchemaReference& reference) {
        return catalog.resolveExternal(reference.publicId, reference.uri);
    };
    const SchemaReadResult read = readSchema(file, schemaLanguageOf(file), options);
    const Vocabulary& v = *read.vocabulary;
    EXPECT_EQ(messagesOf(read), "");
    EXPECT_EQ(v.elementsOf(published.space).size(), published.elements);
    EXPECT_EQ(v.roots().size(), published.roots);
    EXPECT_TRUE(contentOf(v, published.space, published.element).starts_with(published.content))
        << contentOf(v, published.space, published.element);
    const std::string attributes = attributesOf(v, published.space, published.element);
    EXPECT_NE(attributes.find(published.attribute), std::string::npos) << attributes;
    for (int id = 0; id < v.elementCount(); ++id)
        EXPECT_TRUE(
            std::ranges::is_permutation(v.element(id).children, std::set<int>(v.element(id).children.begin(),
                                                                              v.element(id).children.end())))
            << "a child twice";
}

constexpr const char16_t* docBook = u"http://docbook.org/ns/docbook";

INSTANTIATE_TEST_SUITE_P(
    Published, RealSchema,
    testing::Values(Published{"docbook/schema/xsd/5.0/docbook.xsd", docBook, u"para",
                              "text (info | inlinemediaobject", "revisionflag=changed|added|deleted|off", 362,
                              362},
                    Published{"docbook/schema/rng/5.0/docbook.rng", docBook, u"para",
                              "text (info?, (inlinemediaobject", "dir=ltr(Left-to-right text)|rtl", 362, 28},
                    Published{"docbook/schema/dtd/4.5/docbookx.dtd", u"", u"itemizedlist",
                              "(blockinfo?, (title, titleabbrev?)?, (caution", "spacing=normal|compact", 406,
                              406},
                    Published{"w3c-sgml-lib/schema/dtd/REC-xhtml1-20020801/xhtml1-strict.dtd",
                              u"http://www.w3.org/1999/xhtml", u"html", "(head, body)",
                              "xmlns^=http://www.w3.org/1999/xhtml", 77, 77}));

} // namespace
} // namespace tavrin
