// Texts that become ready piece by piece, and on another thread.

#include "buffer/TextLoader.h"

#include "buffer/Buffer.h"
#include "buffer/RecordingParser.h"
#include "support.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <thread>

namespace tavrin {
namespace {

using test::linesOf;
using test::Random;
using test::RecordingParser;

struct LoadedBuffer {
    LoadedBuffer() { buffer.setParser(&parser); }
    RecordingParser parser;
    Buffer buffer;
};

/// Hands the bytes over in pieces of at most `longest`.
void addInPieces(TextLoader& loader, std::string_view bytes, Random& random, int longest) {
    while (!bytes.empty()) {
        const std::span<std::uint8_t> room = loader.room();
        const std::size_t count =
            std::min({room.size(), bytes.size(), static_cast<std::size_t>(1 + random.below(longest))});
        std::memcpy(room.data(), bytes.data(), count);
        loader.add(count);
        bytes.remove_prefix(count);
    }
}

std::string textOf(Random& random, std::string_view start, const std::vector<std::string_view>& parts,
                   std::size_t length) {
    std::string text(start);
    while (text.size() < length)
        text += random.pick(parts);
    return text;
}

std::string repeated(std::string_view part, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += part;
    return text;
}

TEST(TextLoader, givesWhatLoadingTheWholeGives) {
    using namespace std::string_view_literals;
    constexpr std::size_t large = 1 << 20;
    Random random(7);
    const std::string longLines = repeated("x", 700);
    const std::string texts[] = {
        "",
        "a",
        "\xEF\xBB\xBF",
        textOf(random, "", {"<a b='c'>\n", "text\r\n", "\r", "\t"}, large),
        textOf(random, "\xEF\xBB\xBF", {"\xC3\xA9\n", "\xF0\x9F\x98\x80", "\xE2\x82\xAC ", longLines}, large),
        textOf(random, "\xEF\xBB\xBF", {"ab\n", "\xFF", "\xE2\x82", "\xF0\x9F\x98", "\x80\x80"}, large),
        textOf(random, "<?xml version='1.0' encoding='us-ascii'?>", {"line\n"}, large) + "\xC3\xA9",
        textOf(random, "", {"line\n", "\xC3\xA9"}, large) + "\xE9 shows that it is ISO-8859-1\n",
        textOf(random, "<?xml version='1.0' encoding='windows-1252'?>", {"line\n", "\x80"}, 100'000),
        textOf(random, "\xFF\xFE", {"a\0"sv, "\n\0"sv, "\xFF\xFE"sv}, large),
        "\n" + repeated("\xEF\xBB\xBF", large / 3) + "\na\r" + repeated("\xEF\xBB\xBF", large) + "\nb\n",
    };
    for (const std::string& text : texts) {
        SCOPED_TRACE(text.substr(0, 60));
        LoadedBuffer whole;
        const SmartPtr<ByteBuffer> bytes = test::blockOf(text);
        DecodeReport expected;
        whole.buffer.loadFromByteBuffer(bytes.get(), &expected);
        for (const int longest : {5'000, 1 << 20}) {
            LoadedBuffer inPieces;
            TextLoader loader(random.oneIn(2) ? text.size() : text.size() / 3);
            addInPieces(loader, text, random, longest);
            ASSERT_EQ(loader.size(), text.size());
            std::optional<LoadedText> loaded = loader.finish();
            ASSERT_TRUE(loaded);
            ASSERT_EQ(loaded->report().invalidCount, expected.invalidCount);
            ASSERT_EQ(loaded->report().firstInvalid, expected.firstInvalid);
            ASSERT_EQ(loaded->report().byteOrderMark, expected.byteOrderMark);
            inPieces.buffer.adopt(std::move(*loaded));
            ASSERT_EQ(inPieces.buffer.getEncoding(), whole.buffer.getEncoding());
            ASSERT_EQ(inPieces.buffer.getLength(), whole.buffer.getLength());
            ASSERT_EQ(linesOf(inPieces.buffer), linesOf(whole.buffer));
            ASSERT_NO_THROW(inPieces.buffer.checkInvariants());
            EXPECT_EQ(inPieces.parser.loads, 1);
        }
    }
}

TEST(TextLoader, stopsWhenItIsTold) {
    Random random(3);
    for (const std::string_view start : {"", "\xFF\xFE", "\xE9", "<?xml version='1.0' encoding='koi8-r'?>"}) {
        std::string text(start);
        text.resize(9 << 20, '\n');
        int calls = 0;
        std::size_t last = 0;
        const auto load = [&](int stopAt) {
            calls = 0;
            last = 0;
            TextLoader loader(text.size());
            std::memcpy(loader.room().data(), text.data(), text.size());
            loader.add(text.size());
            return loader.finish([&](std::size_t examined) {
                EXPECT_GE(examined, last);
                last = examined;
                return ++calls != stopAt;
            });
        };
        ASSERT_TRUE(load(0));
        EXPECT_GE(last + 2, text.size()) << "a mark is no text";
        const int all = calls;
        ASSERT_GE(all, 2);
        for (const int stopAt : {1, all / 2, all}) {
            EXPECT_FALSE(load(stopAt));
            EXPECT_EQ(calls, stopAt);
        }
    }
}

TEST(TextLoader, readsFilesWhateverTheirSizeAndFromWhereTheStreamStands) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::tmpfile(), std::fclose);
    ASSERT_TRUE(file);
    std::string text;
    for (int line = 0; text.size() < (6U << 20); ++line) // large enough for two threads
        text += std::to_string(line) + " \xC3\xA9\n";
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{600'001}, text.size()}) {
        std::rewind(file.get());
        ASSERT_EQ(std::fwrite(text.data(), 1, size, file.get()), size);
        for (const std::size_t start : {std::size_t{0}, size / 3}) {
            ASSERT_EQ(std::fseek(file.get(), static_cast<long>(start), SEEK_SET), 0);
            LoadedBuffer read;
            read.buffer.adopt(TextLoader::readFile(file.get()));
            const Buffer::LoadedLines all = size > 0 ? read.buffer.getLoadedLines(0) : Buffer::LoadedLines{};
            const std::string_view bytes(reinterpret_cast<const char*>(all.bytes.data()), all.bytes.size());
            EXPECT_TRUE(bytes == std::string_view(text).substr(start, size - start)) << size << ' ' << start;
        }
    }
}

TEST(TextLoader, runsOnAnyThreadAndItsTextBelongsToWhoTakesIt) {
    LoadedBuffer text;
    std::optional<LoadedText> loaded;
    for (const std::string_view part : {"<first>\n", "<second>\n"}) {
        std::thread([&] {
            Random random(1);
            TextLoader loader(0);
            addInPieces(loader, repeated(part, 100'000), random, 1 << 16);
            loaded = loader.finish();
        }).join();
        const unsigned generation = text.buffer.getGeneration();
        text.buffer.adopt(std::move(*loaded));
        EXPECT_GT(text.buffer.getGeneration(), generation);
        EXPECT_EQ(text.buffer.getLineCount(), 100'000);
        EXPECT_EQ(text.buffer.getUsualLineEnd(), LineEnd::Lf);
        EXPECT_EQ(text.buffer.getLoadedLines(0).end, 100'000);
        text.buffer.insert(99'999, 0, u'x');
        EXPECT_EQ(text.buffer.getLineText(99'999).substr(0, 2), u"x<");
    }
}

} // namespace
} // namespace tavrin
