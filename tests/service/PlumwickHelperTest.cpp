#include "service/PlumwickHelper.h"

#include "platform/appkit/NSFileWrapper.h"
#include "platform/foundation/connections/SCNetworkReachability.h"
#include "support/LocalServer.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace kelvo {
namespace {

/// Of the RTFD that a page becomes; the name of the text is left out.
std::string attachments(const std::shared_ptr<PlumwickHelper>& helper, const std::string& page,
                        bool allowsRemote, const NSURL& base = {}) {
    const NSData rtfd =
        helper->RTFDWithHTML_baseURL_allowRemoteRequest(NSData::dataWithBytes(page), base, allowsRemote);
    const auto package = NSFileWrapper::initWithSerializedRepresentation(rtfd);
    if (!package)
        return "no package";
    EXPECT_TRUE(package->fileWrapperForName(u"TXT.rtf"));
    std::string names;
    for (const auto& [name, child] : package->fileWrappers()) {
        if (name != NSString(u"TXT.rtf"))
            names += name.UTF8String() + " ";
    }
    return names;
}

TEST(PlumwickHelperTest, DecidesWhichRequestsGo) {
    const SCNetworkRehearsal network(
        [](const std::string& name) -> std::optional<std::vector<std::string>> {
            if (name == "near.test")
                return {{"192.168.1.20"}};
            if (name == "own.test")
                return {{"192.168.1.7"}};
            if (name == "far.test")
                return {{"203.0.113.5"}};
            return std::nullopt;
        },
        {{"192.168.1.7", 24}});
    const auto helper = std::make_shared<PlumwickHelper>();
    const std::pair<bool, const char*> rows[] = {
        {true, "file:///etc/hosts FILE://far.test/x data:,x about:blank http:///x http://near.test/x "
               "http://own.test:81/ https://localhost/ http://127.0.0.1/ http://[::1]/ http://192.168.1.99/"},
        {false, "http://far.test/ http://unknown.test/ https://203.0.113.5/"}};
    for (const auto& [goes, list] : rows) {
        std::istringstream urls(list);
        for (std::string url; urls >> url;) {
            const NSURL asked = NSURL::URLWithString(NSString::stringWithUTF8String(url));
            const NSURLRequest decided =
                helper->webView_resource_willSendRequest_redirectResponse_fromDataSource(
                    {}, {}, NSURLRequest::requestWithURL(asked), {}, {});
            EXPECT_EQ(decided.URL(), goes ? asked : NSURL()) << url;
        }
    }
}

TEST(PlumwickHelperTest, RendersPagesWithWhatMayBeLoaded) {
    int lookUps = 0;
    const SCNetworkRehearsal network(
        [&lookUps](const std::string&) -> std::optional<std::vector<std::string>> {
            ++lookUps;
            return {{"203.0.113.5"}};
        },
        {});
    tests::LocalServer server;
    const tests::TemporaryFolder folder;
    server.respond("/near.gif", "image/gif", tests::smallPicture);
    server.redirect("/away.gif", "http://far.invalid/x.gif");
    const NSString file = NSString::stringWithUTF8String(folder.write("page.html", ""));
    folder.write("own.gif", tests::smallPicture);
    const std::string size = " width=9 height=9>";
    const std::string page = "<img src=own.gif" + size + "<img src='" + server.url("/near.gif") + "'" + size +
                             "<img src='" + server.url("/away.gif") + "'" + size +
                             "<img src='http://far.invalid/y.gif'" + size;
    const auto helper = std::make_shared<PlumwickHelper>();
    EXPECT_EQ(attachments(helper, page, false, NSURL::fileURLWithPath(file)), "own.gif near.gif ");
    EXPECT_EQ(server.count("/away.gif"), 1);
    EXPECT_EQ(lookUps, 1) << "the far host, once for both";
    EXPECT_EQ(attachments(helper, page, false, NSURL::URLWithString(u"mailto:nobody")), "near.gif ");
    const NSURL missing = NSURL::fileURLWithPath(NSString::stringWithUTF8String(folder.path("missing.html")));
    EXPECT_EQ(attachments(helper, page, false, missing), "near.gif ");
    const NSURL feed =
        NSURL::URLWithString(NSString::stringWithUTF8String("feed" + server.url("/").substr(4)));
    EXPECT_EQ(attachments(helper, "<img src=near.gif" + size, false, feed), "near.gif ");

    lookUps = 0;
    EXPECT_EQ(attachments(helper, "<img src='" + server.url("/near.gif") + "'" + size, true), "near.gif ");
    EXPECT_EQ(lookUps, 0) << "nobody is asked";
    EXPECT_EQ(server.count("/near.gif"), 5);
    EXPECT_TRUE(helper->RTFDWithHTML_baseURL_allowRemoteRequest(nullptr, nullptr, true).isNil());
}

TEST(PlumwickHelperTest, ANameIsTheAddressThatWasJudged) {
    int turns = 0;
    const SCNetworkRehearsal network(
        [&turns](const std::string& name) -> std::optional<std::vector<std::string>> {
            if (name.starts_with("silent"))
                std::this_thread::sleep_for(std::chrono::seconds(2));
            // Of this machine when it is looked up first, and of anybody's afterwards.
            if (name == "turning.test")
                return {{turns++ == 0 ? "127.0.0.1" : "203.0.113.5"}};
            return std::nullopt;
        },
        {}, 1);
    tests::LocalServer server;
    const std::string port = server.url("").substr(std::string("http://127.0.0.1").size());
    std::string page;
    for (int name = 0; name < 12; ++name)
        page += "<img src='http://silent" + std::to_string(name) + ".test/x.gif'>";
    for (const char* path : {"/a.gif", "/b.gif"}) {
        server.respond(path, "image/gif", tests::smallPicture);
        page += "<img width=9 height=9 src='http://turning.test" + port + path + "'>";
    }
    EXPECT_EQ(attachments(std::make_shared<PlumwickHelper>(), page, false), "a.gif b.gif ");
    EXPECT_EQ(turns, 1);
}

TEST(PlumwickHelperTest, ArchivesWithoutTextHaveNoString) {
    const tests::TemporaryFolder folder;
    const std::tuple<const char*, std::string, std::string, std::vector<const char16_t*>> rows[] = {
        {"text", "text/html", "<p>x", {u"String", u"Source", u"URL"}},
        {"white", "text/html", "<p> &nbsp;", {u"Source", u"URL"}},
        {"pictures", "text/html", "<body><img src=a>", {u"Source", u"URL"}},
        {"empty", "text/html", "", {u"Source", u"URL"}},
        {"no markup",
         "multipart/related; boundary=b",
         "--b\r\nContent-Type: image/png\r\nContent-Location: http://h/i\r\n\r\nx\r\n--b--\r\n",
         {u"URL"}},
    };
    for (const auto& [name, type, content, keys] : rows) {
        const std::string file =
            folder.write("page.mht", "MIME-Version: 1.0\r\nContent-Type: " + type +
                                         "\r\nContent-Location: http://h/\r\n\r\n" + content);
        const NSDictionary result = std::make_shared<PlumwickHelper>()->searchableTextOfWebArchive(
            NSString::stringWithUTF8String(file));
        EXPECT_EQ(result.count(), keys.size()) << name;
        for (const char16_t* key : keys)
            EXPECT_FALSE(result.objectForKey(key).isNil()) << name << ": " << NSString(key).UTF8String();
    }
}

} // namespace
} // namespace kelvo
