#pragma once

#include <string>

namespace kelvo::documentengine {

/// Gives `change` the contents of every entry whose name ends in ".xml" and puts what it changed, of which it
/// tells, into the zip file. Other entries stay as they are; so does the whole when nothing was changed, and
/// when it is not a plain zip file of at most 4 GiB.
void changeXMLInZip(std::string& zip, bool (*change)(std::string& contents));

} // namespace kelvo::documentengine
