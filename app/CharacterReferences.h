#pragma once

#include "parsers/XmlPlaces.h"

#include <QList>

namespace tavrin {

class TextEditorCtrl;

namespace app {

/// The characters of a text that an encoding lacks.
struct CharacterLoss {
    struct Place {
        int line = 0;
        int column = 0;
        char32_t character = 0;
        XmlPlace kind = XmlPlace::Text;
    };
    int encoding = 0;
    qsizetype count = 0;
    Place first;                    ///< meaningful when count > 0
    qsizetype withoutReference = 0; ///< where XML has no reference for them
    QList<Place> places;            ///< of those, the first few hundred

    static constexpr qsizetype mostPlaces = 500;
};
/// Looks at the whole text, as it would be saved in the encoding.
[[nodiscard]] CharacterLoss findCharacterLoss(TextEditorCtrl& control, int encoding);

/// Writes numeric character references for the characters that the encoding lacks, where XML has them, as one
/// undo step. The caret stays with its text.
void writeCharacterReferences(TextEditorCtrl& control, int encoding);

} // namespace app
} // namespace tavrin
