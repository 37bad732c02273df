#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>

namespace tbb {

template <class Value>
class enumerable_thread_specific {
  public:
    enumerable_thread_specific() : _make([] { return std::make_unique<Value>(); }) {}
    /// Of a function that makes a value, or of what a value is made of.
    template <class Source>
    explicit enumerable_thread_specific(Source source) {
        if constexpr (std::is_invocable_v<Source>)
            _make = [source] { return std::unique_ptr<Value>(new Value(source())); };
        else
            _make = [source] { return std::make_unique<Value>(source); };
    }

    Value &local() {
        const std::lock_guard guard(_lock);
        std::unique_ptr<Value> &value = _values[std::this_thread::get_id()];
        if (value == nullptr)
            value = _make();
        return *value;
    }

    /// For who waited for all threads.
    auto begin() { return Iterator{_values.begin()}; }
    auto end() { return Iterator{_values.end()}; }

  private:
    struct Iterator {
        typename std::map<std::thread::id, std::unique_ptr<Value>>::iterator position;
        Value &operator*() const { return *position->second; }
        Iterator &operator++() {
            ++position;
            return *this;
        }
        bool operator!=(const Iterator &other) const { return position != other.position; }
    };

    std::function<std::unique_ptr<Value>()> _make;
    std::map<std::thread::id, std::unique_ptr<Value>> _values;
    std::mutex _lock;
};

} // namespace tbb
