// A program of somebody else: asks, looks at values of every kind, and catches what the library throws.

#include <plumwick/Client.h>

#include <cstdio>

int main() {
    kelvo::Client client;
    const kelvo::NSData nothing = client.PDFImageRepOfFile(
        kelvo::NSFileManager::defaultManager().stringWithFileSystemRepresentation("/nowhere/caf\xE9"));
    if (!nothing.isNil() || nothing == kelvo::NSData::data())
        return 1;
    const auto outcome = client.outcomeOfLastRequest();
    if (!outcome || outcome->sentence.isNil() || kelvo::wordOfOutcome(outcome->outcome) != u"nothing" ||
        kelvo::Client::recentRequests(1).front().token != outcome->token)
        return 6;

    kelvo::NSMutableDictionary made = kelvo::NSMutableDictionary::dictionary();
    made.setObject_forKey(kelvo::NSData::dataWithBytes("bytes"), kelvo::ResultThumbnailKey);
    made.setObject_forKey(kelvo::NSArray::arrayWithObjects({u"x", kelvo::NSNumber::numberWithInt(7)}),
                          u"array");
    made.setObject_forKey(kelvo::NSURL::URLWithString(u"http://example.org/"), kelvo::ResultURLKey);
    made.setObject_forKey(kelvo::NSDate::date(), u"date");
    made.setObject_forKey(kelvo::NSAttributedString(u"rich"), kelvo::ResultStringKey);
    const auto rich = kelvo::NSAttributedString::withValue(made.objectForKey(kelvo::ResultStringKey));
    if (rich != kelvo::NSAttributedString(u"rich") || rich.runs().front().attributes->font.isBold)
        return 7;
    if (made == kelvo::NSMutableDictionary(kelvo::NSDictionary::dictionary()) ||
        kelvo::Value(made) == kelvo::Value(made.allKeys()) || kelvo::NSData::data() == kelvo::NSData() ||
        kelvo::NSURL() == made.objectForKey(kelvo::ResultURLKey).url() ||
        made.allKeys() == kelvo::NSArray() ||
        kelvo::NSStringFromSize({612, 792}).UTF8String() != "{612, 792}" ||
        kelvo::UTF8StringOfCharacters(u"x") != "x" || kelvo::checkedSizeInBytes(3, 2) != 6 ||
        kelvo::Value(made).description().isNil())
        return 2;
    try {
        kelvo::NSString(u"short").characterAtIndex(5);
        return 3;
    } catch (const kelvo::NSException& exception) {
        if (exception.name() != kelvo::NSRangeException)
            return 4;
    }
    try {
        kelvo::ClientOptions options;
        options.startsService = false;
        options.timeoutSeconds = 1e-9;
        kelvo::Client(options).metaDataForFile(u"/nowhere");
    } catch (const kelvo::ClientError& error) {
        if (error.kind() != kelvo::ClientError::Kind::timedOut)
            return 5;
    }
    std::printf("process %d\n", static_cast<int>(client.status().processIdentifier));
}
