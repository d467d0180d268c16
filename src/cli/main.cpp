// Entry point of tarnwickmp4-cli: dispatches the first argument to its command.
#include "cli/commands.h"

int main(int argc, char **argv)
{
    return cli::RunCommandLine(argc, argv);
}
