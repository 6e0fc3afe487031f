#include "platform/schema/ContentModel.h"

#include <algorithm>
#include <unordered_set>

namespace tavrin {

bool Wildcard::allows(std::u16string_view namespaceName) const {
    const bool listed = std::ranges::find(namespaces, namespaceName) != namespaces.end();
    return listed != isExcept;
}

ParticlePool::ParticlePool() {
    add({.kind = ParticleKind::nothing});
    add({.kind = ParticleKind::empty});
}

int ParticlePool::add(Particle particle) {
    const auto [at, isNew] = numbers_.try_emplace(std::move(particle), size());
    if (isNew) {
        nodes_.push_back(at->first);
        optional_.push_back(matchesEmpty(at->first));
    }
    return at->second;
}

int ParticlePool::element(int index, int min, int max) {
    return repeat(add({.kind = ParticleKind::element, .index = index}), min, max);
}

int ParticlePool::anyElement(const Wildcard& wildcard, int min, int max) {
    const auto known = std::ranges::find(wildcards_, wildcard);
    const auto index = static_cast<int>(known - wildcards_.begin());
    if (known == wildcards_.end())
        wildcards_.push_back(wildcard);
    return repeat(add({.kind = ParticleKind::wildcard, .index = index}), min, max);
}

namespace {

/// Groups in groups are kept beyond this many parts: unfolding them could double the parts with each step.
constexpr std::size_t maxUnfolded = 4096;

/// A choice between equal nodes is one of them, and impossible alternatives are none.
void tidyChoice(std::vector<int>& parts) {
    std::unordered_set<int> seen = {ParticlePool::nothing};
    std::erase_if(parts, [&](int part) { return !seen.insert(part).second; });
}

} // namespace

int ParticlePool::group(ParticleKind kind, std::vector<int> parts, int min, int max) {
    std::vector<int> flat;
    for (const int part : parts) {
        const Particle& node = nodes_[part];
        const bool isSame = node.kind == kind && node.min == 1 && node.max == 1;
        if (isSame && flat.size() + node.parts.size() <= maxUnfolded)
            flat.insert(flat.end(), node.parts.begin(), node.parts.end());
        else
            flat.push_back(part);
    }
    if (kind == ParticleKind::choice) {
        tidyChoice(flat);
        if (flat.empty())
            return nothing;
    } else {
        if (std::ranges::find(flat, nothing) != flat.end())
            return min == 0 ? empty : nothing;
        std::erase(flat, empty);
        if (flat.empty())
            return empty;
        if (kind == ParticleKind::interleave)
            std::ranges::sort(flat); // the order says nothing, so equal sets become equal nodes
    }
    if (flat.size() == 1)
        return repeat(flat.front(), min, max);
    return repeat(add({.kind = kind, .parts = std::move(flat)}), min, max);
}

int ParticlePool::repeat(int node, int min, int max) {
    if (max == 0 || node == empty)
        return empty;
    if (node == nothing)
        return min == 0 ? empty : nothing;
    if (min == 1 && max == 1)
        return node;
    Particle particle = nodes_[node];
    if (particle.min == 1 && particle.max == 1) {
        particle.min = min;
        particle.max = max;
        return add(std::move(particle));
    }
    const bool innerIsAny = particle.min <= 1 && particle.max == Particle::unbounded;
    if (innerIsAny) { // (a*){m,n} is a*, (a+){m,n} at least m times a
        particle.min *= min;
        return add(std::move(particle));
    }
    const bool innerIsMaybe = particle.min == 0 && particle.max == 1;
    if (innerIsMaybe) { // (a?){m,n} is a{0,n}
        particle.max = max;
        return add(std::move(particle));
    }
    return add({.kind = ParticleKind::sequence, .min = min, .max = max, .parts = {node}});
}

int ParticlePool::single(int node) {
    Particle particle = nodes_[node];
    particle.min = particle.max = 1;
    return add(std::move(particle));
}

bool ParticlePool::matchesEmpty(const Particle& particle) const {
    const auto partIsOptional = [this](int part) { return isOptional(part); };
    if (particle.min == 0)
        return true;
    switch (particle.kind) {
    case ParticleKind::nothing:
    case ParticleKind::element:
    case ParticleKind::wildcard:
        return false;
    case ParticleKind::empty:
        return true;
    case ParticleKind::choice:
        return std::ranges::any_of(particle.parts, partIsOptional);
    case ParticleKind::sequence:
    case ParticleKind::interleave:
        return std::ranges::all_of(particle.parts, partIsOptional);
    }
    return false;
}

} // namespace tavrin
