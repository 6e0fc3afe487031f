#include "platform/schema/ContentMatcher.h"
#include "platform/schema/ElementTemplate.h"
#include "platform/schema/VocabularyBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavrin {
namespace {

constexpr auto many = Particle::unbounded;

/// A builder for elements of no namespace with one-letter names.
class Letters {
  public:
    int one(char16_t name, int min = 1, int max = 1) {
        return pool().element(builder.reference({u"", std::u16string(1, name)}), min, max);
    }
    int sequence(std::vector<int> parts, int min = 1, int max = 1) {
        return pool().group(ParticleKind::sequence, std::move(parts), min, max);
    }
    int choice(std::vector<int> parts, int min = 1, int max = 1) {
        return pool().group(ParticleKind::choice, std::move(parts), min, max);
    }
    int interleave(std::vector<int> parts) {
        return pool().group(ParticleKind::interleave, std::move(parts));
    }
    ParticlePool& pool() { return builder.particles(); }

    /// Declares "r" with that content, and a to g without any.
    std::shared_ptr<const Vocabulary> finish(int content) {
        for (const char16_t name : std::u16string(u"abcdefg"))
            builder.declare({.name = {u"", std::u16string(1, name)}});
        builder.declare({.name = {u"", u"r"}, .isRoot = true, .content = content});
        return builder.finish();
    }

    VocabularyBuilder builder;
};

std::vector<ContentMatcher::Sibling> siblings(const Vocabulary& vocabulary, const std::u16string& names) {
    std::vector<ContentMatcher::Sibling> result;
    for (const char16_t name : names)
        result.push_back({vocabulary.findElement(u"", std::u16string(1, name)), u""});
    return result;
}

/// The letters of a to g that have room between those before and after.
std::string roomFor(const Vocabulary& vocabulary, const std::u16string& before, const std::u16string& after,
                    bool isBeforeComplete = true) {
    const std::u16string all = u"abcdefg";
    ContentMatcher matcher(vocabulary);
    const auto& root = vocabulary.element(vocabulary.findElement(u"", u"r"));
    const std::vector<bool> allowed =
        matcher.allowed(root.content, siblings(vocabulary, before), siblings(vocabulary, after),
                        isBeforeComplete, siblings(vocabulary, all));
    std::string result;
    for (std::size_t i = 0; i < all.size(); ++i)
        if (allowed[i])
            result += static_cast<char>(all[i]);
    return result;
}

TEST(ContentMatcher, tellsWhatHasRoomInASequence) {
    Letters l; // a, b?, (c | d)+, e{2,3}
    const auto vocabulary = l.finish(l.sequence(
        {l.one(u'a'), l.one(u'b', 0), l.choice({l.one(u'c'), l.one(u'd')}, 1, many), l.one(u'e', 2, 3)}));
    struct Case {
        const char16_t* before;
        const char16_t* after;
        const char* room;
    };
    const Case cases[] = {
        {u"", u"", "a"},          {u"a", u"", "bcd"}, {u"ab", u"", "cd"},  {u"abc", u"", "cde"},
        {u"ac", u"e", "cde"},     {u"ace", u"", "e"}, {u"aceee", u"", ""}, {u"ac", u"eee", "cd"},
        {u"", u"b", "a"},         {u"", u"a", ""},    {u"a", u"c", "bcd"}, {u"a", u"b", ""},
        {u"c", u"", "cde"},      // "a" is missing before: as if it were there
        {u"ca", u"", "abcdefg"}, // out of order: no telling
        {u"a", u"ba", "abcdefg"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(roomFor(*vocabulary, c.before, c.after), c.room)
            << testing::PrintToString(std::u16string(c.before))
            << testing::PrintToString(std::u16string(c.after));
    EXPECT_EQ(roomFor(*vocabulary, u"", u"", false), "abcde") << "nothing is known of what precedes";
}

TEST(ContentMatcher, interleavesWholeGroups) {
    Letters l; // (a, b) & c? & d*
    const auto vocabulary = l.finish(
        l.interleave({l.sequence({l.one(u'a'), l.one(u'b')}), l.one(u'c', 0), l.one(u'd', 0, many)}));
    EXPECT_EQ(roomFor(*vocabulary, u"", u""), "acd");
    EXPECT_EQ(roomFor(*vocabulary, u"dad", u""), "bcd");
    EXPECT_EQ(roomFor(*vocabulary, u"cab", u""), "d");
    EXPECT_EQ(roomFor(*vocabulary, u"d", u"cb"), "ad");
}

TEST(ContentMatcher, wildcardsTakeForeignElementsOnly) {
    Letters l;
    const Wildcard foreign{.namespaces = {u""}, .isExcept = true};
    const auto vocabulary =
        l.finish(l.sequence({l.one(u'a'), l.pool().anyElement(foreign, 0, many), l.one(u'b')}));
    EXPECT_EQ(roomFor(*vocabulary, u"a", u""), "b");
    ContentMatcher matcher(*vocabulary);
    const ContentMatcher::Sibling stranger{-1, u"urn:x"};
    const auto before = siblings(*vocabulary, u"a");
    const auto& root = vocabulary->element(vocabulary->roots().front());
    EXPECT_EQ(matcher.allowed(root.content, before, {}, true, {{stranger}}), std::vector<bool>{true});
    EXPECT_EQ(matcher.allowed(root.content, {}, {}, true, {{stranger}}), std::vector<bool>{false});
    EXPECT_EQ(root.wildcards.size(), 1u);
}

TEST(ContentMatcher, thousandsOfSiblingsLeaveTheStatesFew) {
    Letters l;
    const auto vocabulary = l.finish(
        l.sequence({l.choice({l.one(u'a'), l.sequence({l.one(u'a'), l.one(u'b')})}, 0, 5000), l.one(u'c')}));
    EXPECT_EQ(roomFor(*vocabulary, std::u16string(4999, u'a'), u""), "abc");
    EXPECT_EQ(roomFor(*vocabulary, std::u16string(5000, u'a'), u""), "bc");
}

TEST(ContentMatcher, modelsThatStandForVeryManyElementsEndInNoTelling) {
    const auto doubled = [](bool isOptional, ParticleKind outer) {
        Letters l;
        int node = l.one(u'a', isOptional ? 0 : 1);
        for (int i = 0; i < 100; ++i) {
            const int pair = l.sequence({node, node});
            node = l.pool().group(outer, outer == ParticleKind::choice
                                             ? std::vector{pair, l.sequence({l.one(u'b'), node})}
                                             : std::vector{pair, pair});
        }
        return l.finish(l.sequence({node, l.one(u'c')}));
    };
    for (const bool isOptional : {false, true})
        for (const ParticleKind outer : {ParticleKind::choice, ParticleKind::interleave}) {
            const auto vocabulary = doubled(isOptional, outer);
            const std::string room = roomFor(*vocabulary, u"aa", u"");
            EXPECT_NE(room.find('a'), std::string::npos) << room;
        }
    Letters l;
    const auto manyEqual = l.finish(l.sequence(std::vector<int>(100'000, l.one(u'a', 0))));
    EXPECT_EQ(roomFor(*manyEqual, u"a", u"a"), "abcdefg");
}

TEST(VocabularyBuilder, mergesDeclarationsOfOneName) {
    Letters l;
    const VocabularyAttribute kind{.name = {u"", u"kind"}, .values = {{u"x"}, {u"y"}}};
    const VocabularyAttribute kind2{
        .name = {u"", u"kind"}, .documentation = u"What it is.", .values = {{u"y"}, {u"z"}}};
    const VocabularyAttribute id{.name = {u"", u"id"}};
    const int first = l.one(u'a');
    const int second = l.sequence({l.one(u'a'), l.one(u'g')});
    l.builder.declare({.name = {u"", u"m"}, .content = first, .attributes = {{kind, true}, {id, true}}});
    l.builder.declare(
        {.name = {u"", u"m"}, .textAllowed = true, .content = second, .attributes = {{kind2, true}}});
    l.builder.declare({.name = {u"", u"n"}, .attributes = {{kind, false}}});
    l.builder.declare({.name = {u"", u"o"}, .attributes = {{id, false}}});
    l.builder.declare({.name = {u"", u"o"}, .attributes = {{id, true}}});
    const auto vocabulary = l.finish(l.one(u'z'));

    const VocabularyElement& merged = vocabulary->element(vocabulary->findElement(u"", u"m"));
    EXPECT_TRUE(merged.textAllowed);
    ASSERT_EQ(merged.children.size(), 2u);
    EXPECT_EQ(vocabulary->element(merged.children[1]).name.localName, u"g");
    ASSERT_EQ(merged.attributes.size(), 2u);
    EXPECT_TRUE(merged.attributes[0].isRequired);
    EXPECT_FALSE(merged.attributes[1].isRequired) << "one declaration goes without it";
    EXPECT_EQ(vocabulary->attribute(merged.attributes[0].attribute).values.size(), 3u);
    EXPECT_EQ(vocabulary->attribute(merged.attributes[0].attribute).documentation, u"What it is.");
    EXPECT_EQ(vocabulary->attributeValues(u"", {u"", u"kind"}).size(), 3u);
    EXPECT_FALSE(vocabulary->element(vocabulary->findElement(u"", u"o")).attributes[0].isRequired);

    EXPECT_EQ(vocabulary->findElement(u"", u"z"), -1) << "named, but declared nowhere";
    EXPECT_TRUE(vocabulary->element(vocabulary->roots().front()).children.empty());
}

TEST(ElementTemplate, writesWhatIsRequired) {
    VocabularyBuilder builder;
    builder.notePrefix(u"urn:t", u"t");
    auto& pool = builder.particles();
    const auto ref = [&](const char16_t* name) { return pool.element(builder.reference({u"urn:t", name})); };
    const auto required = [](const char16_t* name) {
        return ElementDeclaration::Attribute{{.name = {u"", name}}, true};
    };
    const int title = ref(u"title");
    const int either = pool.group(ParticleKind::choice, {ref(u"br"), ref(u"odd_name")});
    const int body = pool.group(ParticleKind::sequence, {title, either, ref(u"title")});
    builder.declare({.name = {u"urn:t", u"title"}, .textAllowed = true});
    builder.declare({.name = {u"urn:t", u"br"}});
    builder.declare({.name = {u"urn:t", u"img"}, .attributes = {required(u"src"), required(u"alt")}});
    builder.declare({.name = {u"urn:t", u"doc"}, .content = body});
    builder.declare({.name = {u"urn:t", u"list"}, .content = either});
    builder.declare({.name = {u"urn:t", u"odd_name"}, .textAllowed = true});
    builder.declare({.name = {u"urn:t", u"odd"}, .attributes = {required(u"a_b")}});
    builder.declare({.name = {u"urn:t", u"loop"}, .content = ref(u"loop")});
    builder.declare({.name = {u"urn:t", u"hand"},
                     .writtenTemplate = u">\n_<t:title>*</t:title>\n</t:hand>",
                     .textAllowed = true});
    const auto vocabulary = builder.finish();
    const auto written = [&](const char16_t* name, const std::u16string& prefix) {
        const auto element = [&](std::u16string_view) { return prefix; };
        const auto attribute = [](std::u16string_view) { return std::u16string(); };
        return elementTemplate(*vocabulary, vocabulary->findElement(u"urn:t", name), element, attribute);
    };
    struct Case {
        const char16_t* name;
        const char16_t* prefix;
        std::u16string text;
    };
    const Case cases[] = {
        {u"title", u"t", u">*</t:title>"},
        {u"br", u"", u"/>*"},
        {u"img", u"", u"src=\"*\" alt=\"\"/>"},
        {u"doc", u"", u">\n_<title>*</title>\n</doc>"}, // stops at the choice
        {u"list", u"x", u">\n_*\n</x:list>"},
        {u"odd_name", u"", u">*"},
        {u"odd", u"", u">*"},
        {u"hand", u"q", u">\n_<q:title>*</q:title>\n</q:hand>"},
        {u"hand", u"", u">\n_<title>*</title>\n</hand>"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(written(c.name, c.prefix), c.text) << testing::PrintToString(std::u16string(c.name));
    const std::u16string loop = written(u"loop", u"");
    EXPECT_LT(loop.size(), 300u) << "an element that requires itself ends somewhere";
    EXPECT_NE(loop.find(u'*'), std::u16string::npos);
}

} // namespace
} // namespace tavrin
