#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

/// A value for each thread that asks for one, such as memory that its tasks use one after the
/// other. Asking takes a lock, so it is done once a task. Values stay where they are.
template <class Value>
class ZPThreadValues {
  public:
    explicit ZPThreadValues(std::function<Value()> make = [] { return Value(); })
        : _make(std::move(make)) {}

    /// Made when a thread asks for the first time.
    Value &local() {
        const std::lock_guard guard(_lock);
        std::unique_ptr<Value> &value = _values[std::this_thread::get_id()];
        if (value == nullptr)
            value.reset(new Value(_make()));
        return *value;
    }

    /// For who has waited for all threads; in no order that means anything.
    void forEach(const std::function<void(Value &)> &body) {
        for (auto &[thread, value] : _values)
            if (value != nullptr)
                body(*value);
    }

  private:
    const std::function<Value()> _make;
    std::mutex _lock;
    std::map<std::thread::id, std::unique_ptr<Value>> _values;
};
