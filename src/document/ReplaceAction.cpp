#include "document/ReplaceAction.h"

namespace tavrin {

void ReplaceAction::add(int line, int col, std::u16string_view erased, bool filled) {
    const bool repeats = !places_.empty() && std::u16string_view(erased_).substr(lastErased_) == erased;
    if (!repeats) {
        lastErased_ = erased_.size();
        erased_ += erased;
    }
    places_.push_back({line, col, static_cast<std::uint32_t>(erased.size()) & 0x3FFFFFFFU, repeats, filled});
}

template <class Visit>
void ReplaceAction::forEach(Visit visit) const {
    std::u16string_view rest = erased_;
    std::u16string_view erased;
    for (const Place& place : places_) {
        if (!place.repeats) {
            erased = rest.substr(0, place.erased);
            rest.remove_prefix(place.erased);
        }
        visit(place, erased);
    }
}

std::vector<ReplaceAction::PlaceView> ReplaceAction::places() const {
    std::vector<PlaceView> result;
    result.reserve(places_.size());
    forEach([&](const Place& place, std::u16string_view erased) {
        result.push_back({place.line, place.col, erased, place.filled != 0});
    });
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
    int line = -1;
    int shift = 0; // of columns, by the places before on the same line
    forEach([&](const Place& place, std::u16string_view erased) {
        if (place.line != line)
            shift = 0;
        line = place.line;
        const int filled = place.filled ? static_cast<int>(replacement_.size()) : 0;
        changes.push_back({line, place.col + shift, filled, erased});
        shift += filled - static_cast<int>(place.erased);
    });
    return changes;
}

} // namespace tavrin
