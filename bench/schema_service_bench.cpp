// What one completion costs in the schema service, once the schemas have been read.
#include "platform/core/XmlNamespaces.h"
#include "platform/schema/DocumentSchemas.h"
#include "platform/schema/SchemaSources.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>

namespace {

using namespace tavrin;

constexpr const char* docBook = "/usr/share/xml/docbook/schema/rng/5.0/docbook.rng";
constexpr const char16_t* docBookNamespace = u"http://docbook.org/ns/docbook";

/// A document with DocBook 5 bound, everything read.
class World {
  public:
    World() {
        document.bind(docBook);
        while (!library.isIdle())
            thread.waitAndRun();
    }

    QueuedEditorThread thread;
    SchemaLibrary library{thread, {.load = fileSchemaLoader(), .builtIn = builtInVocabularies()}};
    std::u16string text =
        u"<?xml version='1.0'?>\n<book xmlns='http://docbook.org/ns/docbook' version='5.0'>\n" +
        std::u16string(100'000, u'x');
    DocumentSchemas document{{.beginning = [this](std::size_t atMost) { return text.substr(0, atMost); },
                              .path = [] { return std::filesystem::path("/tmp/book.xml"); }},
                             library};
    SchemaContext context{.bindings = {{u"", docBookNamespace}, {u"xsl", std::u16string(xsltNamespace)}},
                          .siblingsBefore = {},
                          .siblingsAfter = {}};
};

World* world(benchmark::State& state) {
    static const std::unique_ptr<World> shared =
        std::filesystem::exists(docBook) ? std::make_unique<World>() : nullptr;
    if (!shared)
        state.SkipWithError("DocBook 5 is not installed");
    return shared.get();
}

void findsAnElement(benchmark::State& state) {
    World* w = world(state);
    if (!w)
        return;
    const auto decisions = w->document.decisions();
    const Vocabulary& vocabulary = *decisions.front().schema->vocabulary;
    for (auto _ : state)
        benchmark::DoNotOptimize(vocabulary.findElement(docBookNamespace, u"section"));
}
BENCHMARK(findsAnElement);

void looksUpChildren(benchmark::State& state) {
    World* w = world(state);
    if (!w)
        return;
    const auto service = w->document.schemaAt({});
    const std::u16string space = docBookNamespace;
    const std::u16string name = u"orderedlist";
    for (auto _ : state)
        benchmark::DoNotOptimize(service->getChildElements(space, name));
}
BENCHMARK(looksUpChildren);

void readsAllChildrenOfASection(benchmark::State& state) {
    World* w = world(state);
    if (!w)
        return;
    const auto service = w->document.schemaAt(w->context);
    const std::u16string space = docBookNamespace;
    const std::u16string name = u"section";
    std::size_t count = 0;
    for (auto _ : state) {
        const auto children = service->getChildElements(space, name);
        for (count = 0; children->next(); ++count)
            benchmark::DoNotOptimize(children->getLocalName());
    }
    state.counters["children"] = static_cast<double>(count);
}
BENCHMARK(readsAllChildrenOfASection);

void tellsWhichChildrenHaveRoom(benchmark::State& state) {
    World* w = world(state);
    if (!w)
        return;
    SchemaContext context = w->context;
    context.siblingsBefore = {{docBookNamespace, u"title"}, {docBookNamespace, u"para"}};
    const auto service = w->document.schemaAt(context);
    const std::u16string space = docBookNamespace;
    const std::u16string name = u"section";
    for (auto _ : state) {
        const auto children = service->getChildElements(space, name);
        while (children->next())
            benchmark::DoNotOptimize(children->isAllowedHere());
    }
}
BENCHMARK(tellsWhichChildrenHaveRoom);

/// The look at the beginning of the text, the association and the service for one place.
void asksTheDocument(benchmark::State& state) {
    World* w = world(state);
    if (!w)
        return;
    for (auto _ : state) {
        benchmark::DoNotOptimize(w->document.schemaAt(w->context));
        state.PauseTiming();
        while (!w->library.isIdle()) // the worker compares with the disk meanwhile
            w->thread.waitAndRun();
        state.ResumeTiming();
    }
}
BENCHMARK(asksTheDocument);

} // namespace
