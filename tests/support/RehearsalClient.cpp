// Asks the running service for the metadata of the file named by its argument, once, and ends.

#include "platform/foundation/NSFileManager.h"

#include <plumwick/Client.h>

int main(int count, char** arguments) {
    kelvo::Client client;
    if (count == 2)
        client.metaDataForFile(
            kelvo::NSFileManager::defaultManager().stringWithFileSystemRepresentation(arguments[1]));
}
