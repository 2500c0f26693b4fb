#include "cli/Commands.h"
#include "cli/Output.h"

#include <unistd.h>

int main(int argumentCount, char** arguments) {
    kelvo::cli::Output output(STDOUT_FILENO);
    kelvo::cli::Output errors(STDERR_FILENO);
    return static_cast<int>(kelvo::cli::runCommand(argumentCount, arguments, output, errors));
}
