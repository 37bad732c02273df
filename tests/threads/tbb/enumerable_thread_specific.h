#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <type_traits>

namespace tbb {

template <class Value>
class enumerable_thread_specific {
  public:
    enumerable_thread_specific() : _make([] { return Value(); }) {}
    /// Of a function that makes a value, or of what a value is made of.
    template <class Source>
    explicit enumerable_thread_specific(Source source) {
        if constexpr (std::is_invocable_v<Source>)
            _make = source;
        else
            _make = [source] { return Value(source); };
    }

    Value &local() {
        const std::lock_guard guard(_lock);
        const auto id = std::this_thread::get_id();
        const auto known = _values.find(id);
        return known != _values.end() ? known->second : _values.emplace(id, _make()).first->second;
    }

    /// For who waited for all threads.
    auto begin() { return Iterator{_values.begin()}; }
    auto end() { return Iterator{_values.end()}; }

  private:
    struct Iterator {
        typename std::map<std::thread::id, Value>::iterator position;
        Value &operator*() const { return position->second; }
        Iterator &operator++() {
            ++position;
            return *this;
        }
        bool operator!=(const Iterator &other) const { return position != other.position; }
    };

    std::function<Value()> _make;
    std::map<std::thread::id, Value> _values;
    std::mutex _lock;
};

} // namespace tbb
