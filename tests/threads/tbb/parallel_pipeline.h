#pragma once

#include "tests/threads/Crew.h"

#include <condition_variable>
#include <functional>
#include <mutex>

namespace tbb {

class flow_control {
  public:
    void stop() { _isStopped = true; }
    bool isStopped() const { return _isStopped; }

  private:
    bool _isStopped = false;
};

enum class filter_mode { serial_in_order, parallel };

template <class From, class To>
struct Filter {
    std::function<To(From)> work;
};
template <class From, class To>
struct First {
    std::function<To(flow_control &)> work;
};
template <class From, class To>
struct Last {
    std::function<void(From)> work;
};
template <class From, class To>
struct Chain {
    std::function<From(flow_control &)> first;
    std::function<To(From)> middle;
    std::function<void(const To &)> last;
};

/// A first stage in order, a parallel one, and a last in order: what this program has.
template <class From, class To, class Body>
auto make_filter(filter_mode, const Body &body) {
    if constexpr (std::is_void_v<From>)
        return First<From, To>{body};
    else if constexpr (std::is_void_v<To>)
        return Last<From, To>{body};
    else
        return Filter<From, To>{body};
}

template <class From, class To>
Chain<From, To> operator&(const First<void, From> &first, const Filter<From, To> &middle) {
    return {first.work, middle.work, nullptr};
}

template <class From, class To>
Chain<From, To> operator&(Chain<From, To> chain, const Last<To, void> &last) {
    chain.last = last.work;
    return chain;
}

template <class From, class To>
void parallel_pipeline(std::size_t tokens, const Chain<From, To> &chain) {
    std::mutex lock;
    std::condition_variable isTurn;
    flow_control control;
    std::size_t begun = 0, finished = 0;
    threads::runCrew(tokens, [&] {
        std::unique_lock guard(lock);
        while (!control.isStopped()) {
            const From item = chain.first(control);
            if (control.isStopped())
                break;
            const std::size_t number = begun++;
            guard.unlock();
            const To result = chain.middle(item);
            guard.lock();
            isTurn.wait(guard, [&] { return finished == number; });
            chain.last(result);
            ++finished;
            isTurn.notify_all();
        }
    });
}

} // namespace tbb
