#include "platform/core/ByteBuffer.h"
#include "platform/core/Encoding.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <string_view>

namespace {

using namespace tavrin;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

enum Content : int { markup, russian, ideographs };

/// At least `units` code units of XML that declares an encoding.
std::u16string sample(Content content, int encoding, std::size_t units) {
    static constexpr std::u16string_view lines[] = {
        u"  <item id=\"42\" name=\"something\">some text and &amp; more of it</item>\r\n",
        u"  <пункт имя=\"значение\">немного текста, написанного по-русски</пункт>\r\n",
        u"  <項目 名前=\"値\">日本語で書かれた文章がここにあります。</項目>\r\n",
    };
    const std::string name = encodingName(encoding);
    std::u16string text =
        u"<?xml version=\"1.0\" encoding=\"" + std::u16string(name.begin(), name.end()) + u"\"?>\r\n";
    text.reserve(units + 128);
    while (text.size() < units)
        text += lines[content];
    return text;
}

std::string encoded(std::u16string_view text, int encoding) {
    std::string bytes = encoding == ENCODING_UTF16 ? "\xFF\xFE" : "";
    TextEncoder encoder(encoding);
    encoder.encode(text, bytes);
    encoder.finish(bytes);
    return bytes;
}

/// Arguments of each benchmark: size in MiB of UTF-16, encoding, content.
std::u16string sample(const benchmark::State& state) {
    const std::size_t units = static_cast<std::size_t>(state.range(0)) * mebibyte / sizeof(char16_t);
    return sample(static_cast<Content>(state.range(2)), static_cast<int>(state.range(1)), units);
}

/// Recognising and decoding, into a fresh block as loading does.
void decode(benchmark::State& state) {
    const std::string bytes = encoded(sample(state), static_cast<int>(state.range(1)));
    for (auto _ : state) {
        state.PauseTiming();
        SmartPtr<ByteBuffer> buffer = ByteBuffer::allocate(bytes.size());
        std::memcpy(buffer->data(), bytes.data(), bytes.size());
        state.ResumeTiming();
        benchmark::DoNotOptimize(multibyteXmlToUnicode(buffer.get(), false));
        benchmark::DoNotOptimize(buffer->data());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes.size()));
}

/// Encoding line by line into a buffer that is emptied at 64 KiB, as saving does. Bytes are those of the
/// result.
void encode(benchmark::State& state) {
    const int encoding = static_cast<int>(state.range(1));
    const std::u16string text = sample(state);
    constexpr std::size_t line = 80;
    constexpr std::size_t flushAt = 64 << 10;
    std::size_t written = 0;
    for (auto _ : state) {
        TextEncoder encoder(encoding);
        std::string out;
        const auto flush = [&] {
            written += out.size();
            benchmark::DoNotOptimize(out.data());
            out.clear();
        };
        for (std::size_t i = 0; i < text.size(); i += line) {
            encoder.encode(std::u16string_view(text).substr(i, line), out);
            if (out.size() >= flushAt)
                flush();
        }
        encoder.finish(out);
        flush();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(written));
}

void sizesAndEncodings(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"MiB", "encoding", "content"})->Unit(benchmark::kMillisecond);
    for (const int size : {1, 10, 100}) {
        for (const int encoding : {ENCODING_UTF8, ENCODING_LATIN1, ENCODING_UTF16})
            bench->Args({size, encoding, markup});
        bench->Args({size, ENCODING_UTF8, russian});
        bench->Args({size, ENCODING_UTF8, ideographs});
        bench->Args({size, ENCODING_LATIN2, markup});
    }
}

BENCHMARK(decode)->Apply(sizesAndEncodings);
BENCHMARK(encode)->Apply(sizesAndEncodings);

} // namespace
