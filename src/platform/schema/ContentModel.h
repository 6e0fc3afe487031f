#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace tavrin {

/// Namespaces that an element not named in a content model may have.
struct Wildcard {
    std::vector<std::u16string> namespaces = {}; ///< an empty string stands for no namespace
    bool isExcept = true; ///< true: any namespace but those listed; so nothing listed means any

    [[nodiscard]] bool allows(std::u16string_view namespaceName) const;
    friend bool operator==(const Wildcard&, const Wildcard&) = default;
};

enum class ParticleKind : std::uint8_t {
    nothing,    ///< matches no content at all, not even the empty one
    empty,      ///< matches the empty content
    element,    ///< one element; `index` is its number in the vocabulary
    wildcard,   ///< one element that the wildcard numbered `index` allows
    sequence,   ///< its parts in order
    choice,     ///< one of its parts
    interleave, ///< all its parts, their elements in any mixture
};

/// One node of a content model. Parts come before the nodes that hold them; equal nodes are one node.
struct Particle {
    static constexpr int unbounded = -1;

    ParticleKind kind = ParticleKind::empty;
    int min = 1; ///< occurrences, at least
    int max = 1; ///< at most; `unbounded`
    int index = 0;
    std::vector<int> parts = {};

    friend auto operator<=>(const Particle&, const Particle&) = default;
};

/// The nodes of all content models of a vocabulary. What is added comes simplified: single parts, nested
/// sequences and choices, and content that cannot be, are folded away.
class ParticlePool {
  public:
    ParticlePool();

    /// Numbers of the two nodes that are always there.
    static constexpr int nothing = 0;
    static constexpr int empty = 1;

    [[nodiscard]] int size() const { return static_cast<int>(nodes_.size()); }
    [[nodiscard]] const Particle& at(int node) const { return nodes_[node]; }
    [[nodiscard]] const Wildcard& wildcard(int index) const { return wildcards_[index]; }

    [[nodiscard]] int element(int index, int min = 1, int max = 1);
    [[nodiscard]] int anyElement(const Wildcard& wildcard, int min = 1, int max = 1);
    /// Takes the parts' numbers; kind is sequence, choice or interleave.
    [[nodiscard]] int group(ParticleKind kind, std::vector<int> parts, int min = 1, int max = 1);
    /// The node, `min` to `max` times.
    [[nodiscard]] int repeat(int node, int min, int max);
    /// The node, exactly once.
    [[nodiscard]] int single(int node);

    /// Whether the node matches the empty content.
    [[nodiscard]] bool isOptional(int node) const { return optional_[node]; }

  private:
    int add(Particle particle);
    [[nodiscard]] bool matchesEmpty(const Particle& particle) const;

    std::vector<Particle> nodes_;
    std::vector<bool> optional_; ///< of each node, for its parts may be shared without end
    std::map<Particle, int> numbers_;
    std::vector<Wildcard> wildcards_;
};

/// The root node of an element's content in its vocabulary's pool.
struct ContentModel {
    int root = ParticlePool::empty;
};

} // namespace tavrin
