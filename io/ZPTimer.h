#pragma once

#include <chrono>
#include <string>

/// Elapsed wall-clock time in whole seconds.
class ZPTimer {
  public:
    void start() { _date1 = std::chrono::system_clock::now(); }
    void stop() { _date2 = std::chrono::system_clock::now(); }
    std::string description() const;

  private:
    std::chrono::system_clock::time_point _date1, _date2;
};
