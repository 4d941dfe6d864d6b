#include "graphics/cairo/ShapedRunCache.h"

#include <utility>

namespace qorl {

const ShapedRun* ShapedRunCache::find(std::u16string_view line) {
    const auto found = index_.find(line);
    if (found == index_.end())
        return nullptr;
    entries_.splice(entries_.begin(), entries_, found->second);
    return &found->second->run;
}

const ShapedRun& ShapedRunCache::add(std::u16string_view line, ShapedRun run) {
    while (!entries_.empty() && (entries_.size() >= capacity || characters_ + line.size() > mostCharacters)) {
        characters_ -= entries_.back().line.size();
        index_.erase(entries_.back().line);
        entries_.pop_back();
    }
    entries_.push_front({std::u16string(line), std::move(run)});
    characters_ += line.size();
    index_.emplace(entries_.front().line, entries_.begin());
    return entries_.front().run;
}

} // namespace qorl
