#include "platform/schema/SchemaReader.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <malloc.h>
#include <string>

// Reading published schemas, as Debian packages them, what is kept of them, and a query.

namespace {

const char* const schemas[] = {
    "docbook/schema/xsd/5.0/docbook.xsd",
    "docbook/schema/rng/5.0/docbook.rng",
    "docbook/schema/dtd/4.5/docbookx.dtd",
    "w3c-sgml-lib/schema/dtd/REC-xhtml1-20020801/xhtml1-strict.dtd",
};

void readSchema(benchmark::State& state) {
    const std::filesystem::path file = std::filesystem::path("/usr/share/xml") / schemas[state.range(0)];
    if (!std::filesystem::exists(file)) {
        state.SkipWithError("not installed");
        return;
    }
    state.SetLabel(file.filename().string());
    const auto language = tavrin::schemaLanguageOf(file);
    (void)tavrin::readSchema(file, language); // what libraries keep for ever is theirs
    const std::size_t before = mallinfo2().uordblks;
    const tavrin::SchemaReadResult kept = tavrin::readSchema(file, language);
    state.counters["kept_MB"] = static_cast<double>(mallinfo2().uordblks - before) / 1e6;
    state.counters["elements"] = kept.vocabulary->elementCount();
    for (auto _ : state)
        benchmark::DoNotOptimize(tavrin::readSchema(file, language));
}
BENCHMARK(readSchema)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

void query(benchmark::State& state) {
    const std::filesystem::path file = std::filesystem::path("/usr/share/xml") / schemas[0];
    if (!std::filesystem::exists(file)) {
        state.SkipWithError("not installed");
        return;
    }
    const auto vocabulary = tavrin::readXmlSchema(file).vocabulary;
    const std::u16string space = u"http://docbook.org/ns/docbook";
    const tavrin::ExpandedName attribute{u"", u"revisionflag"};
    for (auto _ : state) {
        const int id = vocabulary->findElement(space, u"itemizedlist");
        benchmark::DoNotOptimize(vocabulary->element(id).children.size());
        benchmark::DoNotOptimize(vocabulary->attributeValues(space, attribute).size());
    }
}
BENCHMARK(query);

} // namespace
