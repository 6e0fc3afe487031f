#include "files/EncodingLoss.h"

#include "buffer/Buffer.h"
#include "platform/core/Utf8.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tavrin {

namespace {

/// The line behind those from `line` on that lose nothing, as their form alone tells; `line` when it does
/// not.
int skipHarmless(const Buffer& buffer, int line, const Repertoire& known) {
    if (const auto stored = buffer.getStoredLines(line))
        if ((stored->isAscii && known.hasAscii()) || (stored->isUtf8 && known.isUnicode()))
            return stored->end;
    return line;
}

/// The same, as their characters tell.
int skipKnown(const Buffer& buffer, int line, const Repertoire& known) {
    if (const auto stored = buffer.getStoredUnits(line); stored && stored->first == line)
        if (known.findLost(stored->text) == std::u16string_view::npos)
            return stored->end;
    return line;
}

/// The line goes on with the second half of a pair that a cut divides.
bool startsInPair(const Buffer& buffer, int line) {
    if (line == 0 || line >= buffer.getLineCount() || !buffer.getContinuesPrevious(line))
        return false;
    const std::u16string_view text = buffer.getLineText(line);
    const std::u16string_view above = buffer.getLineText(line - 1);
    return !text.empty() && isLowSurrogate(text.front()) && !above.empty() && isHighSurrogate(above.back());
}

bool visitLine(const Buffer& buffer, int line, const Repertoire& known,
               const std::function<bool(const LostCharacter&)>& visit) {
    std::u16string text(buffer.getLineText(line)); // a copy: visiting may read other lines
    if (startsInPair(buffer, line + 1))
        text += buffer.getLineText(line + 1).front();
    for (std::size_t at = known.findLost(text, startsInPair(buffer, line) ? 1 : 0); at < text.size();) {
        const bool isPair = isHighSurrogate(text[at]) && at + 1 < text.size() && isLowSurrogate(text[at + 1]);
        const char32_t character = isPair ? joinSurrogates(text[at], text[at + 1]) : text[at];
        if (!visit({line, static_cast<int>(at), character}))
            return false;
        at = known.findLost(text, at + (isPair ? 2 : 1));
    }
    return true;
}

} // namespace

void forEachLostCharacter(const Buffer& buffer, int encoding,
                          const std::function<bool(const LostCharacter&)>& visit) {
    if (encoding == ENCODING_UTF16 || encoding == ENCODING_UTF16_BE)
        return; // they hold everything
    const Repertoire known(encoding);
    const bool keepsBytes = encoding == buffer.getLoadedEncoding();
    for (int line = 0; line < buffer.getLineCount();) {
        if (const int next = skipHarmless(buffer, line, known); next > line) {
            line = next;
            continue;
        }
        if (keepsBytes)
            if (const auto kept = buffer.getLoadedLines(line); kept.end > line) {
                line = kept.end;
                continue;
            }
        if (const int next = skipKnown(buffer, line, known); next > line) {
            line = next;
            continue;
        }
        const bool isKept = keepsBytes && buffer.getLoadedBytes(line);
        if (!isKept && !visitLine(buffer, line, known, visit))
            return;
        ++line;
    }
}

LostBytes findLostBytes(const Buffer& buffer, int encoding) {
    LostBytes lost;
    const std::size_t loaded = buffer.getLoadReport().invalidCount;
    const TextForm& form = buffer.getLoadedForm();
    if (form.encoding == 0 || loaded == 0)
        return lost;
    const std::span<const std::uint8_t> all = buffer.getAllLoadedBytes();
    std::size_t done = 0; // of all bytes
    const auto replace = [&](std::size_t end) {
        if (end <= done)
            return;
        const DecodeReport report = countReplaced(all.subspan(done, end - done), form.encoding);
        if (report.invalidCount > 0 && lost.count == 0)
            lost.first = form.markSize() + done + report.firstInvalid;
        lost.count += report.invalidCount;
    };
    const auto keep = [&](std::span<const std::uint8_t> bytes) {
        const auto begin = static_cast<std::size_t>(bytes.data() - all.data());
        replace(begin);
        done = begin + bytes.size();
    };
    const bool keepsBytes = encoding == form.encoding;
    for (int line = 0; keepsBytes && line < buffer.getLineCount();) {
        const auto lines = buffer.getLoadedLines(line);
        if (lines.end > line)
            keep(lines.bytes);
        else if (const auto bytes = buffer.getLoadedBytes(line))
            keep(*bytes);
        line = std::max(lines.end, line + 1);
    }
    replace(all.size());
    return lost;
}

} // namespace tavrin
