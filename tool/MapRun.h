#pragma once

#include "map/WQMapper.h"
#include "tool/Options.h"

#include <memory>

/// One run of the program, from its arguments to the files that it writes. It keeps what it read
/// until it goes, so that a program which ends with it need not take it apart.
class MapRun {
  public:
    /// Does what the arguments ask for and logs what fails; `argv` is permuted, as getopt does. The
    /// result is the exit status: 2 for a usage error, else 0.
    [[nodiscard]] int run(int argc, char *argv[]);

  private:
    void drawAsAsked(const Options &options);
    bool saveHeightMap(const Options &options);
    bool saveMap(const Options &options);
    void saveChanges(const Options &options);

    std::unique_ptr<WQClientData> _oldClientData;
    std::unique_ptr<WQClientData> _clientData;
    std::unique_ptr<WQMapper> _mapper;
};
