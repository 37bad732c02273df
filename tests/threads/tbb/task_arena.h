#pragma once

namespace tbb {

class task_arena {
  public:
    explicit task_arena(int) {}

    template <class Body>
    void execute(const Body &body) {
        body();
    }
};

namespace this_task_arena {

/// Threads of a crew take up no other work while they wait, so there is nothing to keep apart.
template <class Body>
void isolate(const Body &body) {
    body();
}

} // namespace this_task_arena
} // namespace tbb
