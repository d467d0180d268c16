// Entry point of tarnwickmp4-cli: dispatches the first argument to its command.
#include "cli/commands.h"
#include "cli/signal_stop.h"

int main(int argc, char **argv)
{
    // Before anything else: a Ctrl-C or termination request from the first instant on is kept.
    cli::InstallStopSignals();
    return cli::RunCommandLine(argc, argv);
}
