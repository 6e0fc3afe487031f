#include "platform/schema/ContentMatcher.h"

#include <algorithm>
#include <iterator>

namespace tavrin {

namespace {

/// Derivatives of hostile models could grow without bound; beyond this many states everything is allowed.
constexpr std::size_t maxStates = 256;
/// So could each derivative, and the time for it. In parts of nodes that are looked at or put together: a
/// question about DocBook takes up to 53,000, and this many take less than half a second.
constexpr std::size_t maxWork = 500'000;

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

bool ContentMatcher::spend(std::size_t work) {
    work_ += work;
    isTooMuch_ |= work_ > maxWork;
    return !isTooMuch_;
}

int ContentMatcher::group(ParticleKind kind, std::vector<int> parts) {
    return spend(parts.size()) ? pool_.group(kind, std::move(parts)) : ParticlePool::nothing;
}

int ContentMatcher::keyOf(const Sibling& sibling) {
    if (sibling.element >= 0)
        return sibling.element;
    const auto known = foreign_.find(sibling.namespaceName);
    if (known != foreign_.end())
        return known->second;
    const int key = -1 - static_cast<int>(foreign_.size());
    return foreign_.emplace(sibling.namespaceName, key).first->second;
}

ContentMatcher::States ContentMatcher::derive(int node, const Sibling& sibling, int key) {
    const Particle& known = pool_.at(node);
    if (!spend(1))
        return {};
    if (known.min == 1 && known.max == 1)
        return deriveOnce(node, sibling, key);
    const int min = std::max(known.min - 1, 0);
    const int max = known.max == Particle::unbounded ? known.max : known.max - 1;
    const int once = pool_.single(node); // from here on `known` may be gone
    const int rest = pool_.repeat(once, min, max);
    States result;
    for (const int first : deriveOnce(once, sibling, key))
        result.push_back(group(ParticleKind::sequence, {first, rest}));
    tidy(result);
    return result;
}

ContentMatcher::States ContentMatcher::deriveOnce(int node, const Sibling& sibling, int key) {
    if (pool_.at(node).parts.empty())
        return matches(pool_.at(node), sibling) ? States{ParticlePool::empty} : States();
    if (const auto known = derived_.find({node, key}); known != derived_.end())
        return known->second;
    States result;
    deriveGroup(Particle(pool_.at(node)), sibling, key, result); // a copy: deriving adds nodes
    tidy(result);
    if (!isTooMuch_)
        derived_.emplace(std::pair(node, key), result);
    return result;
}

void ContentMatcher::deriveGroup(const Particle& particle, const Sibling& sibling, int key, States& into) {
    for (std::size_t i = 0; i < particle.parts.size() && !isTooMuch_; ++i) {
        const States firsts = derive(particle.parts[i], sibling, key);
        if (particle.kind == ParticleKind::choice) {
            into.insert(into.end(), firsts.begin(), firsts.end());
            continue;
        }
        for (const int first : firsts) {
            // Of a sequence what is left after the part; of an interleave all the other parts too.
            const bool isSequence = particle.kind == ParticleKind::sequence;
            std::vector<int> parts(particle.parts.begin() + (isSequence ? static_cast<std::ptrdiff_t>(i) : 0),
                                   particle.parts.end());
            parts[isSequence ? 0 : i] = first;
            into.push_back(group(particle.kind, std::move(parts)));
        }
        if (particle.kind == ParticleKind::sequence && !pool_.isOptional(particle.parts[i]))
            break;
    }
}

ContentMatcher::States ContentMatcher::step(const States& from, const Sibling& sibling) {
    const int key = keyOf(sibling);
    States result;
    for (const int node : from) {
        const States derived = derive(node, sibling, key);
        result.insert(result.end(), derived.begin(), derived.end());
    }
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
        spend(parts.size());
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
    derived_.clear();
    work_ = 0;
    isTooMuch_ = false;
    const States states = statesAfter(content, before, isBeforeComplete);
    const bool isLost = states.empty() || states.size() > maxStates || walk(relax(states), after).empty();
    std::vector<bool> result;
    for (const Sibling& candidate : candidates)
        result.push_back(isLost || !walk(relax(step(states, candidate)), after).empty());
    if (isTooMuch_)
        result.assign(candidates.size(), true);
    return result;
}

} // namespace tavrin
