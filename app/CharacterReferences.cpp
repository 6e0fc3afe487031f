#include "CharacterReferences.h"

#include "control/TextEditorCtrl.h"
#include "document/TextUndoScope.h"
#include "files/EncodingLoss.h"
#include "platform/core/Utf8.h"

#include <algorithm>
#include <string>
#include <vector>

namespace tavrin::app {

namespace {

/// XML 1.0, production 2: what a reference may stand for.
bool isXmlCharacter(char32_t c) {
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0x10FFFF);
}

bool mayBeReference(XmlPlace place, char32_t character) {
    return (place == XmlPlace::Text || place == XmlPlace::AttributeValue) && isXmlCharacter(character);
}

std::u16string referenceTo(char32_t c) {
    static constexpr std::u16string_view digits = u"0123456789ABCDEF";
    std::u16string number;
    for (; c > 0; c /= 16)
        number.insert(number.begin(), digits[c % 16]);
    return u"&#x" + number + u";";
}

/// Lost characters of one line, from left to right.
using LineLoss = std::vector<LostCharacter>;

/// Replaces what stands in the line between its first and its last lost character. Positions on the line are
/// moved along.
void referInLine(TextEditorCtrl& control, const LineLoss& lost,
                 std::initializer_list<std::pair<int, int*>> moved) {
    const Buffer& buffer = control.getBuffer();
    const int line = lost.front().line;
    const std::u16string text(buffer.getLineText(line));
    std::u16string made;
    const int begin = lost.front().col;
    int done = begin;
    bool cutsPair = false;
    std::vector<std::pair<int, int>> shifts; // column in the old text, by how much what follows moves
    for (const LostCharacter& character : lost) {
        made += std::u16string_view(text).substr(static_cast<std::size_t>(done),
                                                 static_cast<std::size_t>(character.col - done));
        const std::u16string reference = referenceTo(character.character);
        made += reference;
        done = character.col + (character.character > 0xFFFF ? 2 : 1);
        cutsPair = done > static_cast<int>(text.size());
        done = std::min(done, static_cast<int>(text.size()));
        shifts.emplace_back(done, static_cast<int>(reference.size()) - (done - character.col));
    }
    for (const auto& [positionLine, column] : moved) {
        const int before = *column;
        for (const auto& [at, by] : shifts)
            *column += positionLine == line && at <= before ? by : 0;
    }
    if (cutsPair)
        control.erase(line + 1, 0, line + 1, 1);
    control.erase(line, begin, line, done);
    control.insert(line, begin, made);
}

} // namespace

CharacterLoss findCharacterLoss(TextEditorCtrl& control, int encoding) {
    CharacterLoss loss;
    loss.encoding = encoding;
    XmlPlaces places(control.getBuffer());
    forEachLostCharacter(control.getBuffer(), encoding, [&](const LostCharacter& lost) {
        const CharacterLoss::Place place{lost.line, lost.col, lost.character, places.at(lost.line, lost.col)};
        if (loss.count++ == 0)
            loss.first = place;
        if (!mayBeReference(place.kind, lost.character) &&
            loss.withoutReference++ < CharacterLoss::mostPlaces)
            loss.places += place;
        return true;
    });
    return loss;
}

void writeCharacterReferences(TextEditorCtrl& control, int encoding) {
    std::vector<LineLoss> lines;
    XmlPlaces places(control.getBuffer());
    forEachLostCharacter(control.getBuffer(), encoding, [&](const LostCharacter& lost) {
        if (!mayBeReference(places.at(lost.line, lost.col), lost.character))
            return true;
        if (lines.empty() || lines.back().front().line != lost.line)
            lines.emplace_back();
        lines.back().push_back(lost);
        return true;
    });
    const int caretLine = control.getCurrentLine();
    const int pivotLine = control.getPivotLine();
    int caretCol = control.getCurrentColoumn();
    int pivotCol = control.getPivotCol();
    {
        const TextUndoScope step(control);
        for (auto line = lines.rbegin(); line != lines.rend(); ++line)
            referInLine(control, *line, {{caretLine, &caretCol}, {pivotLine, &pivotCol}});
    }
    control.updateScrollbars();
    control.setCaret(pivotLine, pivotCol, false);
    control.updatePivot();
    control.setCaret(caretLine, caretCol, true);
    control.redraw();
}

} // namespace tavrin::app
