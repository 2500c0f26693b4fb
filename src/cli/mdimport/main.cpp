#include "cli/mdimport/ImporterListing.h"
#include "client/ServiceProgram.h"
#include "mdimport/ImporterBundles.h"
#include "platform/foundation/FileIO.h"

#include <unistd.h>

#include <exception>
#include <string>
#include <string_view>

namespace {

constexpr int failed = 1;
constexpr int misused = 2;

/// Everything goes to standard error, where the host expects the listing.
int say(const std::string& text, int status) {
    return kelvo::writeAll(STDERR_FILENO, text.data(), text.size()) ? status : failed;
}

int run(int argumentCount, char** arguments) {
    if (argumentCount != 2 || std::string_view(arguments[1]) != "-L")
        return say("Usage: mdimport -L\nLists the installed metadata importers on standard error.\n",
                   misused);
    kelvo::setPlatformRootOfService();
    return say(kelvo::cli::listingOfImporters(kelvo::importersInFolders(), getuid()), 0);
}

} // namespace

int main(int argumentCount, char** arguments) {
    try {
        return run(argumentCount, arguments);
    } catch (const std::exception& error) {
        return say("mdimport: " + std::string(error.what()) + "\n", failed);
    }
}
