#pragma once

#include "buffer/Buffer.h"
#include "platform/core/Undoable.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin {

/// One change of the text at many places, each inside one line, in text order: texts were taken away, and one
/// and the same text without line feeds put in their place or nothing. With the caret and the pivot at the
/// moment of recording. A few bytes a place.
class ReplaceAction : public UndoableAction {
  public:
    explicit ReplaceAction(std::u16string_view replacement) : replacement_(replacement) {}

    [[nodiscard]] std::size_t size() const { return places_.size(); }
    /// REQUIRES: size() > 0.
    [[nodiscard]] int lastLine() const { return places_.back().line; }
    /// `erased` stands at (line, col), behind all places added before. With `filled` the replacement comes
    /// there.
    void add(int line, int col, std::u16string_view erased, bool filled);

    /// The changes that make the new text out of the old one. They refer to this record.
    [[nodiscard]] std::vector<LineReplacement> forward() const;
    /// Those that make the old text again.
    [[nodiscard]] std::vector<LineReplacement> backward() const;

    [[nodiscard]] std::size_t memory() const override {
        return sizeof(ReplaceAction) + (replacement_.size() + erased_.size()) * sizeof(char16_t) +
               places_.size() * sizeof(Place);
    }

    /// One of the places, and what was erased there.
    struct PlaceView {
        int line;
        int col; ///< in the old text
        std::u16string_view erased;
        bool filled;
    };
    [[nodiscard]] std::vector<PlaceView> places() const;
    [[nodiscard]] std::u16string_view replacement() const { return replacement_; }

    int caretLine = 0;
    int caretCol = 0;
    int pivotLine = 0;
    int pivotCol = 0;

  private:
    struct Place {
        int line;
        int col;                   ///< in the old text
        std::uint32_t erased : 30; ///< code units
        std::uint32_t repeats : 1; ///< the same text was erased at the place before
        std::uint32_t filled : 1;
    };

    /// Calls visit(place, erased) for each place.
    template <class Visit>
    void forEach(Visit visit) const;

    std::u16string replacement_;
    std::u16string erased_;      ///< at the places that repeat nothing, one after the other
    std::size_t lastErased_ = 0; ///< begin of the last of them
    std::vector<Place> places_;
};

} // namespace tavrin
