#pragma once

#include "platform/schema/Vocabulary.h"

#include <memory>
#include <span>
#include <string_view>

namespace tavrin {

inline constexpr std::u16string_view xsltNamespaceName = u"http://www.w3.org/1999/XSL/Transform";
inline constexpr std::u16string_view foNamespaceName = u"http://www.w3.org/1999/XSL/Format";

/// The vocabularies that the program knows without a schema: XSLT 1.0 with the prefix "xsl" and XSL-FO 1.0
/// with "fo". Each is made when it is first asked for, on whatever thread, and stays.
[[nodiscard]] std::shared_ptr<const Vocabulary> xsltVocabulary();
[[nodiscard]] std::shared_ptr<const Vocabulary> foVocabulary();

/// The attributes of the XSLT namespace that elements of any other namespace may have in a stylesheet.
[[nodiscard]] std::span<const VocabularyAttribute> xsltAttributesOnOtherElements();

} // namespace tavrin
