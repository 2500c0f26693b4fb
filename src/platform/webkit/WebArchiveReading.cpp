#include "platform/webkit/MIMEHTML.h"
#include "platform/webkit/MIMEParts.h"
#include "platform/webkit/PropertyListArchive.h"

namespace kelvo {

// Apart from the class, which is also of use where no engine can be started.
WebArchive WebArchive::initWithData(const NSData& data) {
    return beginsLikeMIMEMessage(data) ? archiveFromMIMEHTML(data) : archiveFromPropertyList(data);
}

} // namespace kelvo
