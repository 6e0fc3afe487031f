#include "document/ReplaceAction.h"

namespace tavrin {

void ReplaceAction::add(int line, int col, std::u16string_view erased, bool filled) {
    places_.push_back({line, col, static_cast<std::uint32_t>(erased.size()) & 0x7FFFFFFFU, filled});
    erased_ += erased;
}

std::vector<ReplaceAction::PlaceView> ReplaceAction::places() const {
    std::vector<PlaceView> result;
    result.reserve(places_.size());
    std::u16string_view erased = erased_;
    for (const Place& place : places_) {
        result.push_back({place.line, place.col, erased.substr(0, place.erased), place.filled != 0});
        erased.remove_prefix(place.erased);
    }
    return result;
}

std::vector<LineReplacement> ReplaceAction::forward() const {
    std::vector<LineReplacement> changes;
    changes.reserve(places_.size());
    for (const Place& place : places_)
        changes.push_back({place.line, place.col, static_cast<int>(place.erased),
                           place.filled ? std::u16string_view(replacement_) : std::u16string_view()});
    return changes;
}

std::vector<LineReplacement> ReplaceAction::backward() const {
    std::vector<LineReplacement> changes;
    changes.reserve(places_.size());
    std::u16string_view erased = erased_;
    int line = -1;
    int shift = 0; // of columns, by the places before on the same line
    for (const Place& place : places_) {
        if (place.line != line)
            shift = 0;
        line = place.line;
        const int filled = place.filled ? static_cast<int>(replacement_.size()) : 0;
        changes.push_back({line, place.col + shift, filled, erased.substr(0, place.erased)});
        erased.remove_prefix(place.erased);
        shift += filled - static_cast<int>(place.erased);
    }
    return changes;
}

} // namespace tavrin
