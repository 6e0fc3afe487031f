#pragma once

#include <string_view>

namespace tavrin {

/// Namespace names of XSL Transformations 1.0 and XSL Formatting Objects 1.0.
inline constexpr std::u16string_view xsltNamespace = u"http://www.w3.org/1999/XSL/Transform";
inline constexpr std::u16string_view xslFoNamespace = u"http://www.w3.org/1999/XSL/Format";

} // namespace tavrin
