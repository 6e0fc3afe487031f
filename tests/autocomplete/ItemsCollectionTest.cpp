#include "FakeSchema.h"
#include "autocomplete/XmlAutocompleteItemsCollection.h"
#include "platform/core/XmlNamespaces.h"

#include <gtest/gtest.h>

namespace tavrin::test {
namespace {

using Texts = std::vector<std::u16string>;

Texts textsOf(const XmlAutocompleteItemsCollection& items) {
    Texts texts;
    for (int i = 0; i < items.getCount(); ++i)
        texts.push_back(items.getItemText(i));
    return texts;
}

class ItemsCollection : public testing::Test {
  protected:
    FakeSchema schema_;
    XSchema::Scope scope_{&schema_};
    XmlAutocompleteItemsCollection items_;
};

TEST_F(ItemsCollection, rootsAreSortedByCodeUnitsAndSkipTheNameless) {
    schema_.roots = {{u"b", u"p"}, {u"a", u"p"}, {u"", u"p"}, {u"B", u"p"}, {u"plain"}};
    items_.fillRootElements();
    EXPECT_EQ(textsOf(items_), (Texts{u"p:B", u"p:a", u"p:b", u"plain"}));
}

TEST_F(ItemsCollection, childrenOfOtherNamespacesComeAlone) {
    schema_.children[{u"urn:d", u"para"}] = {{u"", u"d", u"urn:d"}, {u"link", u"d", u"urn:d"}};
    schema_.ofNamespace[std::u16string(xslFoNamespace)] = {{u"block", u"fo"}};
    items_.fillChildElements(u"para", u"urn:d");
    EXPECT_EQ(textsOf(items_), (Texts{u"d:", u"d:link"})) << "no child is skipped";
}

TEST_F(ItemsCollection, partnersComeAfterTheChildrenAndMayBeThereTwice) {
    const std::u16string xslt(xsltNamespace);
    const std::u16string fo(xslFoNamespace);
    schema_.ofNamespace[fo] = {{u"inline", u"fo", fo}, {u"block", u"fo", fo}};
    schema_.ofNamespace[xslt] = {{u"if", u"xsl", xslt}, {u"choose", u"xsl", xslt}};
    schema_.children[{xslt, u"template"}] = {
        {u"param", u"xsl", xslt}, {u"block", u"fo", fo}, {u"if", u"xsl", xslt}};
    schema_.children[{fo, u"block"}] = {{u"inline", u"fo", fo}};
    items_.fillChildElements(u"template", xslt.c_str());
    EXPECT_EQ(textsOf(items_), (Texts{u"xsl:if", u"xsl:param", u"fo:block", u"fo:block", u"fo:inline"}));

    XmlAutocompleteItemsCollection below;
    below.fillChildElements(u"block", fo.c_str());
    EXPECT_EQ(textsOf(below), (Texts{u"fo:inline", u"xsl:choose", u"xsl:if"}));
}

TEST_F(ItemsCollection, attributesShowWhatTheyAre) {
    schema_.attributes[{u"n", u"e"}] = {{.name = u"b", .second = true},
                                        {.name = u"a"},
                                        {.name = u"Z", .first = true},
                                        {.name = u"c", .first = true, .second = true}};
    items_.fillAttributes(u"e", u"n");
    EXPECT_EQ(textsOf(items_), (Texts{u"Z", u"a", u"b", u"c"}));
    const std::vector<std::pair<int, int>> kindAndStyle{{1, 0}, {0, 0}, {2, 1}, {3, 1}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(items_.candidate(i).kind, kindAndStyle[static_cast<std::size_t>(i)].first) << i;
        EXPECT_EQ(items_.getItemStyle(i), kindAndStyle[static_cast<std::size_t>(i)].second) << i;
        EXPECT_EQ(items_.getItemImage(i), 1);
        EXPECT_TRUE(items_.canAcceptItem(i));
    }
}

TEST_F(ItemsCollection, valuesKeepTheirOrderAndDescriptionsAreOnlyShown) {
    schema_.values[{u"n", u"a"}] = {{.name = u"z", .prefix = u"extra"}, {.name = u"a length", .first = true}};
    items_.fillAttributeValues(u"n", u"a");
    EXPECT_EQ(textsOf(items_), (Texts{u"z", u"a length"}));
    EXPECT_EQ(items_.candidate(0).namespaceName, u"extra");
    EXPECT_TRUE(items_.canAcceptItem(0));
    EXPECT_FALSE(items_.canAcceptItem(1));
    EXPECT_EQ(items_.getItemStyle(1), 2);
}

TEST_F(ItemsCollection, whatHasNoRoomCanBeLeftOut) {
    schema_.children[{u"n", u"e"}] = {{.name = u"a", .namespaceName = u"n", .documentation = u"words"},
                                      {.name = u"b", .namespaceName = u"n", .allowedHere = false}};
    schema_.templates[{u"n", u"a"}] = u">*</a>";
    items_.fillChildElements(u"e", u"n");
    EXPECT_EQ(textsOf(items_), (Texts{u"a", u"b"}));
    EXPECT_FALSE(items_.isItemAllowedHere(1));
    EXPECT_EQ(items_.getItemDocumentation(0), u"words");
    EXPECT_EQ(items_.getAutofillText(0), u">*</a>");
    EXPECT_EQ(items_.getItemImage(0), 0);
    EXPECT_EQ(items_.getImageList()->GetImageCount(), 2);
    items_.removeNotAllowedHere();
    EXPECT_EQ(textsOf(items_), Texts{u"a"});
}

TEST(ItemsCollectionWithoutService, throws) {
    XmlAutocompleteItemsCollection items;
    EXPECT_THROW(items.fillRootElements(), NullPointerException);
}

} // namespace
} // namespace tavrin::test
