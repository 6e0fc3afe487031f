// The text layer on documents of 1, 10 and 100 MB: what must not grow with the document, and what is read
// once.

#include "buffer/Buffer.h"
#include "generated_xml.h"
#include "parsers/XmlLangParser.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>

namespace tavrin {
namespace {

constexpr int visibleLines = 60;

struct Document {
    explicit Document(const std::string& bytes) : Document() {
        SmartPtr<ByteBuffer> block = ByteBuffer::allocate(bytes.size());
        std::memcpy(block->data(), bytes.data(), bytes.size());
        buffer.loadBytes(std::move(block));
    }
    Document() {
        parser->setBuffer(&buffer);
        buffer.setParser(parser.get());
    }
    void readPage(int first) {
        for (int line = first; line < std::min(first + visibleLines, buffer.getLineCount()); ++line)
            benchmark::DoNotOptimize(buffer.getLineFormats(line).data());
    }
    Buffer buffer;
    SmartPtr<XmlLangParser> parser{new XmlLangParser};
};

const std::string& textOf(const benchmark::State& state) {
    static std::map<std::int64_t, std::string> texts;
    std::string& text = texts[state.range(0)];
    if (text.empty()) {
        const std::u16string units = bench::generatedXml(static_cast<std::size_t>(state.range(0)) << 20);
        text.assign(units.begin(), units.end()); // all of it is ASCII
    }
    return text;
}

/// The document of this size, loaded and coloured once.
Document& parsedDocument(const benchmark::State& state) {
    static std::map<std::int64_t, std::unique_ptr<Document>> documents;
    std::unique_ptr<Document>& document = documents[state.range(0)];
    if (!document) {
        document = std::make_unique<Document>(textOf(state));
        document->readPage(document->buffer.getLineCount() - visibleLines);
    }
    return *document;
}

void sizes(benchmark::internal::Benchmark* b) {
    b->Arg(1)->Arg(10)->Arg(100)->ArgName("MB")->Unit(benchmark::kMicrosecond);
}

/// From the file to the colours of the first page.
void load(benchmark::State& state) {
    const std::string& text = textOf(state);
    const auto path =
        std::filesystem::temp_directory_path() / ("tavrin-bench-" + std::to_string(text.size()));
    std::ofstream(path, std::ios::binary) << text;
    for (auto _ : state) {
        Document document;
        if (!document.buffer.loadFile(path.u16string().c_str()))
            state.SkipWithError("the file can't be read");
        document.readPage(0);
    }
    std::filesystem::remove(path);
    state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}
BENCHMARK(load)->Apply(sizes);

/// The same from UTF-16 text.
void loadText(benchmark::State& state) {
    const std::string& bytes = textOf(state);
    const std::u16string text(bytes.begin(), bytes.end());
    for (auto _ : state) {
        Document document;
        document.buffer.loadText(text.data(), text.size());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}
BENCHMARK(loadText)->Apply(sizes);

void firstJumpToTheEnd(benchmark::State& state) {
    const std::string& text = textOf(state);
    for (auto _ : state) {
        state.PauseTiming();
        auto document = std::make_unique<Document>(text);
        state.ResumeTiming();
        document->readPage(document->buffer.getLineCount() - visibleLines);
        state.PauseTiming();
        document.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(firstJumpToTheEnd)->Apply(sizes);

void colourEverything(benchmark::State& state) {
    const std::string& text = textOf(state);
    for (auto _ : state) {
        state.PauseTiming();
        auto document = std::make_unique<Document>(text);
        state.ResumeTiming();
        for (int line = 0; line < document->buffer.getLineCount(); ++line)
            benchmark::DoNotOptimize(document->buffer.getCharFormat(line, 0));
        state.PauseTiming();
        document.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
}
BENCHMARK(colourEverything)->Apply(sizes);

/// Typing one character and colouring the page around it, at the top, in the middle and at the end in turn.
void typeWithColours(benchmark::State& state) {
    Document& document = parsedDocument(state);
    const int places[] = {10, document.buffer.getLineCount() / 2,
                          document.buffer.getLineCount() - visibleLines};
    std::size_t i = 0;
    for (auto _ : state) {
        const int line = places[i++ % std::size(places)];
        document.buffer.insert(line, 4, u'x');
        document.readPage(line);
        document.buffer.erase(line, 4, line, 5);
        document.readPage(line);
    }
}
BENCHMARK(typeWithColours)->Apply(sizes);

void splitAndJoinLines(benchmark::State& state) {
    Document& document = parsedDocument(state);
    const int line = document.buffer.getLineCount() / 2;
    for (auto _ : state) {
        document.buffer.splitLine(line, 3);
        document.readPage(line);
        document.buffer.erase(line, 3, line + 1, 0);
        document.readPage(line);
    }
}
BENCHMARK(splitAndJoinLines)->Apply(sizes);

void jumpToTheEndAfterAnEditAtTheTop(benchmark::State& state) {
    Document& document = parsedDocument(state);
    for (auto _ : state) {
        document.buffer.insert(5, 0, u' ');
        document.readPage(document.buffer.getLineCount() - visibleLines);
        document.buffer.erase(5, 0, 5, 1);
        document.readPage(document.buffer.getLineCount() - visibleLines);
    }
}
BENCHMARK(jumpToTheEndAfterAnEditAtTheTop)->Apply(sizes);

void widestLineAfterAnEdit(benchmark::State& state) {
    Document& document = parsedDocument(state);
    const int line = document.buffer.getLineCount() / 2;
    for (auto _ : state) {
        document.buffer.insert(line, 0, u'x');
        benchmark::DoNotOptimize(document.buffer.getColumnCount());
        document.buffer.erase(line, 0, line, 1);
    }
}
BENCHMARK(widestLineAfterAnEdit)->Apply(sizes);

/// The element around the end of the text, after the first question; an edit at the top comes between.
void parentAtTheEnd(benchmark::State& state) {
    Document& document = parsedDocument(state);
    std::u16string local;
    std::u16string qualified;
    std::u16string uri;
    bool topLevel = false;
    int tagLine = 0;
    int tagCol = 0;
    const int line = document.buffer.getLineCount() - 1;
    const auto ask = [&] {
        document.parser->findParentTag(line, 0, local, qualified, uri, topLevel, tagLine, tagCol);
        if (topLevel || local != u"catalogue")
            state.SkipWithError("the wrong parent");
    };
    ask();
    for (auto _ : state) {
        document.buffer.insert(5, 0, u' ');
        ask();
        document.buffer.erase(5, 0, 5, 1);
    }
}
BENCHMARK(parentAtTheEnd)->Apply(sizes);

void find(benchmark::State& state, int flags) {
    Document& document = parsedDocument(state);
    int line = 0;
    int col = 0;
    for (auto _ : state)
        if (document.buffer.find(0, 0, u"no such text", FIND_DOWN | flags, line, col))
            state.SkipWithError("found what is not there");
    state.SetBytesProcessed(state.range(0) * state.iterations() << 20);
}
BENCHMARK_CAPTURE(find, matchCase, FIND_MATCH_CASE)->Apply(sizes);
BENCHMARK_CAPTURE(find, ignoreCase, 0)->Apply(sizes);

void save(benchmark::State& state) {
    Document& document = parsedDocument(state);
    std::size_t bytes = 0;
    for (auto _ : state)
        document.buffer.writeBytes([&](std::string_view piece) {
            bytes += piece.size();
            return true;
        });
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}
BENCHMARK(save)->Apply(sizes);

} // namespace
} // namespace tavrin

BENCHMARK_MAIN();
