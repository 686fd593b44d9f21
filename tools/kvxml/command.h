/// The subcommands. Each has a file of its own, called after it, and a row in the table of main.cpp.
#pragma once

namespace tool {

struct Command {
    const char* name;
    const char* summary;
    /// Does all that the command line wants; returns the status to end with. `argv[0]` is the name.
    int (*run)(int argc, char** argv);
};

int RunConvert(int argc, char** argv);
int RunGenerate(int argc, char** argv);
int RunValidate(int argc, char** argv);

}  // namespace tool
