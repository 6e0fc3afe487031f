#pragma once

#include "platform/schema/Vocabulary.h"

#include <functional>
#include <map>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tavrin {

/// Tells which elements a content model has room for among given siblings.
///
/// Works with partial derivatives of the content model (V. Antimirov, 1996): what may follow a sequence of
/// elements is a set of content models. Elements after the place may have others inserted before them, so
/// they need only be a subsequence of what the model allows, which is the same model with every element
/// optional.
class ContentMatcher {
  public:
    /// An element of the document: its number in the vocabulary, -1 when unknown, and its namespace.
    struct Sibling {
        int element = -1;
        std::u16string_view namespaceName;
    };

    explicit ContentMatcher(const Vocabulary& vocabulary);

    /// For each candidate whether it may stand between `before` and `after` in an element of that content.
    /// `isBeforeComplete` is false when more siblings precede than are given. When the siblings before do not
    /// fit the model as they stand, elements are taken to be missing between them; when they do not fit so
    /// either, or those after do not, every candidate may stand there. So it is with models that would take
    /// too long: those of hostile schemas, in which few nodes stand for very many.
    [[nodiscard]] std::vector<bool> allowed(const ContentModel& content, std::span<const Sibling> before,
                                            std::span<const Sibling> after, bool isBeforeComplete,
                                            std::span<const Sibling> candidates);

  private:
    using States = std::vector<int>; ///< nodes, sorted, each once

    [[nodiscard]] bool matches(const Particle& particle, const Sibling& sibling) const;
    /// Counts work of the present question; false when there has been too much.
    bool spend(std::size_t work);
    /// A group of these parts.
    [[nodiscard]] int group(ParticleKind kind, std::vector<int> parts);
    /// The number under which derivatives by a sibling are remembered.
    [[nodiscard]] int keyOf(const Sibling& sibling);
    [[nodiscard]] States derive(int node, const Sibling& sibling, int key);
    [[nodiscard]] States deriveOnce(int node, const Sibling& sibling, int key);
    void deriveGroup(const Particle& particle, const Sibling& sibling, int key, States& into);
    [[nodiscard]] States step(const States& from, const Sibling& sibling);
    [[nodiscard]] States walk(States from, std::span<const Sibling> siblings);
    /// The node with every element in it optional.
    int relax(int node);
    [[nodiscard]] States relax(const States& states);
    [[nodiscard]] States statesAfter(const ContentModel& content, std::span<const Sibling> before,
                                     bool isBeforeComplete);

    const Vocabulary& vocabulary_;
    ParticlePool pool_; ///< the vocabulary's, and what the derivatives add
    std::unordered_map<int, int> relaxed_;
    std::map<std::u16string, int, std::less<>> foreign_; ///< keys of siblings without a number
    std::map<std::pair<int, int>, States> derived_; ///< of groups, by node and sibling's key; one question's
    std::size_t work_ = 0;
    bool isTooMuch_ = false;
};

} // namespace tavrin
