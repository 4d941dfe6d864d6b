#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qorl {

/// Listeners in their order of addition. Holds no references: a listener removes itself before it goes, at
/// the latest when it hears that what it listens to is destroyed.
///
/// A listener may remove itself or others while the list is being called; one that was removed is not called
/// any more, one that was added is called from the next time on.
template <typename T>
class ListenerList {
public:
    bool isEmpty() const { return live_ == 0; }
    bool contains(const T* listener) const {
        return listener && std::find(listeners_.begin(), listeners_.end(), listener) != listeners_.end();
    }

    void add(T* listener) {
        listeners_.push_back(listener);
        ++live_;
    }

    /// Takes out the first entry of `listener`.
    bool remove(T* listener) {
        auto found = std::find(listeners_.begin(), listeners_.end(), listener);
        if (found == listeners_.end() || !listener)
            return false;
        *found = nullptr;
        --live_;
        tidy();
        return true;
    }

    template <typename Call>
    void tell(Call&& call) {
        const Walk walk(*this);
        const size_t end = listeners_.size();
        for (size_t i = 0; i < end; ++i)
            if (T* listener = listeners_[i])
                call(*listener);
    }

private:
    /// Keeps places for as long as a call is under way, however it ends.
    class Walk {
    public:
        explicit Walk(ListenerList& list) : list_(list) { ++list_.calls_; }
        Walk(const Walk&) = delete;
        Walk& operator=(const Walk&) = delete;
        ~Walk() {
            --list_.calls_;
            list_.tidy();
        }

    private:
        ListenerList& list_;
    };

    void tidy() {
        if (calls_ == 0 && live_ != listeners_.size())
            listeners_.erase(std::remove(listeners_.begin(), listeners_.end(), nullptr), listeners_.end());
    }

    std::vector<T*> listeners_;
    size_t live_ = 0;
    int32_t calls_ = 0;
};

} // namespace qorl
