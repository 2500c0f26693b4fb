#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// Messages (eml, emlx) and mailboxes (mbox): who wrote to whom, when and about what, what they wrote, and the names of
/// what is attached. Of a mailbox the text has each message after its subject and writer.
void importMail(Attributes& attributes);

} // namespace kelvo::importers
