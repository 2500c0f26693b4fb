#include "importers/mail/MailImport.h"

KELVO_IMPORTER(kelvo::importers::importMail)
