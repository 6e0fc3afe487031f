#pragma once

#include "platform/ui/Constants.h"
#include "platform/ui/Geometry.h"

#include <utility>
#include <vector>

namespace tavrin {

/// A filled outline of a picture; points in pixels of the picture at its natural size, from its top left
/// corner. Outlines and not dots, so that a picture is as sharp at any scale of the screen.
struct ImageShape {
    COLORREF colour;
    std::vector<std::pair<double, double>> outline;
};

/// Pictures of one size, for lists: drawn from the back to the front.
class CImageList {
  public:
    using Image = std::vector<ImageShape>;

    explicit CImageList(CSize size) : size_(size) {}

    /// Returns the picture's number.
    int Add(Image image) {
        images_.push_back(std::move(image));
        return GetImageCount() - 1;
    }
    [[nodiscard]] int GetImageCount() const { return static_cast<int>(images_.size()); }
    [[nodiscard]] CSize GetImageSize() const { return size_; }
    [[nodiscard]] const Image& GetImage(int index) const { return images_[static_cast<std::size_t>(index)]; }

  private:
    CSize size_;
    std::vector<Image> images_;
};

} // namespace tavrin
