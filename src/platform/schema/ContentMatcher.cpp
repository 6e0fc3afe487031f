#include "platform/schema/ContentMatcher.h"

#include <algorithm>
#include <iterator>

namespace tavrin {

namespace {

/// Derivatives of hostile models could grow without bound; beyond this many states everything is allowed.
constexpr std::size_t maxStates = 256;

void tidy(std::vector<int>& states) {
    std::ranges::sort(states);
    states.erase(std::unique(states.begin(), states.end()), states.end());
}

} // namespace

ContentMatcher::ContentMatcher(const Vocabulary& vocabulary)
    : vocabulary_(vocabulary), pool_(vocabulary.particles()) {}

bool ContentMatcher::matches(const Particle& particle, const Sibling& sibling) const {
    if (particle.kind == ParticleKind::element)
        return particle.index == sibling.element;
    return particle.kind == ParticleKind::wildcard &&
           pool_.wildcard(particle.index).allows(sibling.namespaceName);
}

void ContentMatcher::derive(int node, const Sibling& sibling, States& into) {
    const Particle particle = pool_.at(node);
    if (particle.min == 1 && particle.max == 1) {
        deriveOnce(node, sibling, into);
        return;
    }
    const int once = pool_.single(node);
    const int max = particle.max == Particle::unbounded ? particle.max : particle.max - 1;
    const int rest = pool_.repeat(once, std::max(particle.min - 1, 0), max);
    States firsts;
    deriveOnce(once, sibling, firsts);
    for (const int first : firsts)
        into.push_back(pool_.group(ParticleKind::sequence, {first, rest}));
}

void ContentMatcher::deriveOnce(int node, const Sibling& sibling, States& into) {
    const Particle particle = pool_.at(node); // a copy: deriving adds nodes
    switch (particle.kind) {
    case ParticleKind::nothing:
    case ParticleKind::empty:
        break;
    case ParticleKind::element:
    case ParticleKind::wildcard:
        if (matches(particle, sibling))
            into.push_back(ParticlePool::empty);
        break;
    case ParticleKind::choice:
        for (const int part : particle.parts)
            derive(part, sibling, into);
        break;
    case ParticleKind::sequence:
        for (std::size_t i = 0; i < particle.parts.size(); ++i) {
            States firsts;
            derive(particle.parts[i], sibling, firsts);
            for (const int first : firsts) {
                std::vector<int> parts = {first};
                parts.insert(parts.end(), particle.parts.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                             particle.parts.end());
                into.push_back(pool_.group(ParticleKind::sequence, std::move(parts)));
            }
            if (!pool_.isOptional(particle.parts[i]))
                break;
        }
        break;
    case ParticleKind::interleave:
        for (std::size_t i = 0; i < particle.parts.size(); ++i) {
            States firsts;
            derive(particle.parts[i], sibling, firsts);
            for (const int first : firsts) {
                std::vector<int> parts = particle.parts;
                parts[i] = first;
                into.push_back(pool_.group(ParticleKind::interleave, std::move(parts)));
            }
        }
        break;
    }
}

ContentMatcher::States ContentMatcher::step(const States& from, const Sibling& sibling) {
    States result;
    for (const int node : from)
        derive(node, sibling, result);
    tidy(result);
    std::erase(result, ParticlePool::nothing);
    return result;
}

ContentMatcher::States ContentMatcher::walk(States from, std::span<const Sibling> siblings) {
    for (const Sibling& sibling : siblings) {
        if (from.empty() || from.size() > maxStates)
            break;
        from = step(from, sibling);
    }
    return from;
}

int ContentMatcher::relax(int node) {
    if (const auto known = relaxed_.find(node); known != relaxed_.end())
        return known->second;
    const Particle particle = pool_.at(node);
    int result = node;
    switch (particle.kind) {
    case ParticleKind::nothing:
        result = ParticlePool::empty;
        break;
    case ParticleKind::empty:
        break;
    case ParticleKind::element:
    case ParticleKind::wildcard:
        result = pool_.repeat(pool_.single(node), 0, particle.max);
        break;
    case ParticleKind::sequence:
    case ParticleKind::choice:
    case ParticleKind::interleave:
        std::vector<int> parts;
        for (const int part : particle.parts)
            parts.push_back(relax(part));
        result = pool_.group(particle.kind, std::move(parts), 0, particle.max);
        break;
    }
    relaxed_.emplace(node, result);
    return result;
}

ContentMatcher::States ContentMatcher::relax(const States& states) {
    States result;
    for (const int node : states)
        result.push_back(relax(node));
    tidy(result);
    return result;
}

ContentMatcher::States ContentMatcher::statesAfter(const ContentModel& content,
                                                   std::span<const Sibling> before, bool isBeforeComplete) {
    if (isBeforeComplete)
        if (States exact = walk({content.root}, before); !exact.empty())
            return exact;
    return walk({relax(content.root)}, before);
}

std::vector<bool> ContentMatcher::allowed(const ContentModel& content, std::span<const Sibling> before,
                                          std::span<const Sibling> after, bool isBeforeComplete,
                                          std::span<const Sibling> candidates) {
    const States states = statesAfter(content, before, isBeforeComplete);
    const bool isLost = states.empty() || states.size() > maxStates || walk(relax(states), after).empty();
    std::vector<bool> result;
    for (const Sibling& candidate : candidates)
        result.push_back(isLost || !walk(relax(step(states, candidate)), after).empty());
    return result;
}

} // namespace tavrin
