// Lines by the place of their first character in the whole text.

#include "buffer/LineStoreNodes.h"

#include <iterator>

namespace tavrin {

std::int64_t LineStore::offset(int index) const {
    if (index == lineCount())
        return total_.length + total_.lines;
    const Place place = find(index);
    std::int64_t before = 0;
    for (int line = index - place.index; line < index; ++line)
        before += length(line) + 1;
    for (const Node* node = place.page; node->parent; node = node->parent)
        for (const Node* beside : node->parent->children) {
            if (beside == node)
                break;
            before += beside->sums.length + beside->sums.lines;
        }
    return before;
}

int LineStore::lineAtOffset(std::int64_t offset) const {
    const Node* node = root_.get();
    int first = 0;
    while (!node->isPage) {
        const auto& children = static_cast<const Inner*>(node)->children;
        auto child = children.begin();
        for (; std::next(child) != children.end(); ++child) {
            const Sums& sums = (*child)->sums;
            if (offset < sums.length + sums.lines)
                break;
            offset -= sums.length + sums.lines;
            first += sums.lines;
        }
        node = *child;
    }
    const int last = first + node->sums.lines - 1;
    int line = first;
    for (; line < last && offset > length(line); ++line)
        offset -= length(line) + 1;
    return line;
}

} // namespace tavrin
