#include "SchemaWorld.h"
#include "platform/core/MemorySettings.h"

#include <chrono>
#include <latch>
#include <thread>

namespace tavrin {
namespace {

SchemaRequest file(const SchemaWorld& world, const char* name) {
    return {.file = world.folder / name};
}

TEST(SchemaLibrary, readsOnceForAllAndAgainWhenAFileHasChanged) {
    SchemaWorld world;
    world.write("a.xsd", "root one");
    int changes = 0;
    const auto subscription = world.library().subscribe([&] { ++changes; });
    const auto schema = world.library().request(file(world, "a.xsd"));
    EXPECT_EQ(schema, world.library().request(file(world, "a.xsd")));
    EXPECT_EQ(schema->state, SchemaState::reading);
    world.settle();
    EXPECT_EQ(schema->state, SchemaState::ready);
    EXPECT_EQ(changes, 2) << "catalogs and schema";
    const auto first = schema->vocabulary;
    (void)world.library().request(file(world, "a.xsd"));
    world.settle();
    EXPECT_EQ(world.reads, 1);

    world.write("a.xsd", "root other\nel more");
    (void)world.library().request(file(world, "a.xsd"));
    EXPECT_EQ(schema->vocabulary, first) << "nothing waits for the disk";
    world.settle();
    EXPECT_EQ(schema->vocabulary->elementCount(), 2);
    EXPECT_EQ(first->element(0).name.localName, u"one") << "who holds the old one keeps it";

    std::filesystem::remove(world.folder / "a.xsd");
    world.library().checkFiles();
    world.settle();
    EXPECT_EQ(schema->vocabulary->elementCount(), 2);
    EXPECT_EQ(schema->state, SchemaState::ready);
    EXPECT_EQ(schema->messages.size(), 1u);
    EXPECT_EQ(world.library().files().size(), 2u) << "schema and catalog are looked at further";
}

TEST(SchemaLibrary, aBrokenSchemaKeepsTheLastGoodState) {
    struct Step {
        const char* text;
        SchemaState state;
        int elements;
        std::size_t messages;
    };
    const Step steps[] = {
        {"error first", SchemaState::failed, 0, 1},
        {"root a\nerror partly", SchemaState::ready, 1, 1}, // what could be read is used
        {"root a\nel b\nel c", SchemaState::ready, 3, 0},
        {"root a\nerror broken again", SchemaState::ready, 3, 1},
        {"error one\nerror two", SchemaState::ready, 3, 2},
        {"root last", SchemaState::ready, 1, 0},
    };
    SchemaWorld world;
    std::shared_ptr<const SharedSchema> schema;
    for (const Step& step : steps) {
        world.write("a.xsd", step.text);
        schema = world.library().request(file(world, "a.xsd"));
        world.settle();
        EXPECT_EQ(schema->state, step.state) << step.text;
        EXPECT_EQ(schema->vocabulary->elementCount(), step.elements) << step.text;
        EXPECT_EQ(schema->messages.size(), step.messages) << step.text;
    }
}

TEST(SchemaLibrary, keepsWhatIsHeldAndTheLastFew) {
    SchemaWorld world;
    world.write("held.xsd", "root r");
    const auto held = world.library().request(file(world, "held.xsd"));
    for (int i = 0; i < 30; ++i) {
        (void)world.library().request(file(world, ("gone" + std::to_string(i)).c_str()));
        world.settle();
    }
    EXPECT_LT(world.library().files().size(), 15u);
    EXPECT_EQ(held, world.library().request(file(world, "held.xsd")));
    EXPECT_EQ(world.reads, 31);
    world.settle();
}

TEST(SchemaLibrary, endsWhileASchemaIsBeingRead) {
    QueuedEditorThread thread;
    std::latch started(1);
    std::atomic<bool> wasTold = false;
    {
        SchemaLibrary library(thread,
                              {.load =
                                   [&](const SchemaRequest&, const XmlCatalog&, const std::stop_token& stop) {
                                       started.count_down();
                                       std::atomic<bool> told = false;
                                       const std::stop_callback callback(stop, [&] {
                                           told = true;
                                           told.notify_one();
                                       });
                                       told.wait(false);
                                       wasTold = true;
                                       return SchemaReadResult{};
                                   },
                               .systemCatalogs = {}});
        (void)library.request({.file = "first"});
        (void)library.request({.file = "second"});
        started.wait();
        thread.runPosted();
    }
    EXPECT_TRUE(wasTold);
    thread.runPosted(); // what was delivered too late finds nobody
}

TEST(SchemaPreferences, comeBackFromTheSettings) {
    MemorySettings settings;
    SchemaPreferences preferences;
    preferences.rules = {{SchemaRule::Kind::namespaceName, "urn:a|b\\n", "/schemas/ä.xsd"},
                         {SchemaRule::Kind::filePattern, "*.x\ny", "http://x/y.rng"}};
    preferences.catalogs = {"/my/catalog.xml"};
    preferences.bound["/doc.xml"] = {"/a.xsd", "/b.rng"};
    saveSchemaPreferences(preferences, settings);
    EXPECT_EQ(loadSchemaPreferences(settings), preferences);
    preferences.rules.pop_back();
    preferences.bound.clear();
    saveSchemaPreferences(preferences, settings);
    EXPECT_EQ(loadSchemaPreferences(settings), preferences);
    settings.setStringValue("Schemas", "Rule 1", u"nonsense");
    EXPECT_TRUE(loadSchemaPreferences(settings).rules.empty());
}

TEST(SchemaLocation, isALocalFileOrNone) {
    struct Case {
        const char* reference;
        const char* folder;
        const char* file; ///< empty: none
    };
    const Case cases[] = {
        {"a%20b.xsd", "/d", "/d/a b.xsd"},
        {"../x/./y", "/d/e", "/d/x/y"},
        {"/abs", "", "/abs"},
        {"rel", "", ""},
        {"file:///p/q%C3%A4", "", "/p/qä"},
        {"file:/p", "", "/p"},
        {"FILE://localhost/p", "", "/p"},
        {"file://host/p", "", ""},
        {"http://h/p", "/d", ""},
        {"//h/p", "/d", ""},
        {"urn:x", "/d", ""},
        {"", "/d", ""},
        {"#id", "/d", ""},
        {"a#id", "/d", "/d/a"},
        {"100%", "/d", "/d/100%"},
    };
    for (const Case& c : cases) {
        const auto found = localFile(c.reference, c.folder);
        EXPECT_EQ(found ? pathText(*found) : "", c.file) << c.reference;
    }
}

TEST(SchemaLocation, filePatternsMatchWholeNames) {
    const std::string longName = "/" + std::string(200'000, 'a') + "b";
    std::string manyStars;
    for (int i = 0; i < 500; ++i)
        manyStars += "*a";
    struct Case {
        std::string file;
        std::string pattern;
        bool isMatch;
    };
    const Case cases[] = {
        {"/a/pom.xml", "pom.*", true},
        {"/a/pom.xml", "*.xm", false},
        {"/a/pom.xml", "", false},
        {"/a/pom.xml", "pom.xml*", true},
        {"/a/pom.xml", "**", true},
        {"/a/pom.xml", "pom.xml?", false},
        {"/a/pom.xml", "?om.*m?", true},
        {"/a/abab", "*ab", true}, // the first "ab" is not the one that ends the name
        {"/a/abcbcd", "a*bcd", true},
        {"/a/abcbce", "a*bcd", false},
        {"/a/b/c.xml", "*/b/?.xml", true},
        {"/a/b/c.xml", "/a/*", true},
        {"/a/b/c.xml", "b/*", false},
        {"/a/\u00fc.xml", "?.xml", true}, // a character, not a byte
        {"/a/x\u00fc.xml", "*?\u00fc.xml", true},
        {"/a/\u00fc.xml", "??.xml", false},
        {longName, manyStars + "c", false}, // takes for ever when every star is tried at every place
        {longName, manyStars + "b", true},
    };
    for (const Case& c : cases)
        EXPECT_EQ(matchesFilePattern(pathOf(c.file), c.pattern), c.isMatch)
            << c.file.substr(0, 20) << ' ' << c.pattern.substr(0, 20);
}

} // namespace
} // namespace tavrin
