#include "autocomplete/CompletionIcons.h"

namespace tavrin {

namespace {

constexpr CSize iconSize{16, 16};
constexpr COLORREF white = 0xFFFFFF;
constexpr COLORREF elementColour = 0xC4722A;   // blue
constexpr COLORREF attributeColour = 0x2F6BB8; // brown

/// A tile with cut corners, for the sign to stand on.
ImageShape tile(COLORREF colour) {
    return {colour, {{3, 1}, {13, 1}, {15, 3}, {15, 13}, {13, 15}, {3, 15}, {1, 13}, {1, 3}}};
}

ImageShape bar(double left, double top, double right, double bottom) {
    return {white, {{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
}

} // namespace

CImageList makeCompletionIcons() {
    CImageList icons(iconSize);
    icons.Add({
        tile(elementColour),
        {white, {{6, 4}, {7.2, 5}, {4.7, 8}, {7.2, 11}, {6, 12}, {2.6, 8}}},     // <
        {white, {{10, 4}, {13.4, 8}, {10, 12}, {8.8, 11}, {11.3, 8}, {8.8, 5}}}, // >
    });
    icons.Add({
        tile(attributeColour),
        bar(3, 5.5, 8, 7.1), // =
        bar(3, 8.9, 8, 10.5),
        bar(9.4, 4, 10.8, 7.5), // "
        bar(11.8, 4, 13.2, 7.5),
    });
    return icons;
}

} // namespace tavrin
