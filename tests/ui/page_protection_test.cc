// What a page may not do, beside reaching this computer's services.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>
#include <webkit/webkit.h>

#include "platform/files.h"
#include "support/temporary_folder.h"
#include "ui/page_support.h"

namespace tidewrack {
namespace {

namespace fs = std::filesystem;

constexpr const char* picture =
    "data:image/png;base64,"
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNkYPhfDwAChwGA60e6kgAAAABJRU5ErkJggg==";

std::string response(const std::string& headers, const std::string& body) {
  return "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
         headers + "\r\n" + body;
}

std::string redirection(const std::string& target) {
  return "HTTP/1.1 302 Found\r\nConnection: close\r\nContent-Length: 0\r\nLocation: " + target + "\r\n\r\n";
}

bool asksFor(const CountingServer& server, const std::string& address) {
  return std::any_of(server.requests().begin(), server.requests().end(), [&](const std::string& request) {
    return request.find(" " + address) != std::string::npos;
  });
}

class PageProtection : public PageTest {};

TEST_F(PageProtection, TheSessionIsEphemeral) {
  EXPECT_TRUE(webkit_network_session_is_ephemeral(webkit_web_view_get_network_session(page())));
}

TEST_F(PageProtection, TheSettingsOfferNoMoreThanAPageNeeds) {
  WebKitSettings* settings = webkit_web_view_get_settings(page());
  for (const char* property :
       {"enable-page-cache", "enable-html5-local-storage", "enable-html5-database", "enable-webrtc",
        "enable-media-stream", "enable-fullscreen", "javascript-can-open-windows-automatically",
        "javascript-can-access-clipboard", "allow-modal-dialogs", "allow-file-access-from-file-urls"}) {
    gboolean isOn = TRUE;
    g_object_get(settings, property, &isOn, nullptr);
    EXPECT_FALSE(isOn) << property;
  }
  EXPECT_TRUE(webkit_settings_get_enable_javascript(settings));
}

// The child processes that lay pages out live in a file system of their own.
TEST_F(PageProtection, TheWebProcessIsInASandbox) {
  show("<p>text</p>");
  int count = 0;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    std::error_code error;
    const auto program = fs::read_symlink(entry.path() / "exe", error);
    if (error || program.filename() != "WebKitWebProcess") {
      continue;
    }
    const auto theirs = fs::read_symlink(entry.path() / "ns" / "mnt", error);
    if (!error) {
      ++count;
      EXPECT_NE(theirs, fs::read_symlink("/proc/self/ns/mnt"));
    }
  }
  EXPECT_GE(count, 1);
}

TEST_F(PageProtection, NothingLoadsWhenTheFilterCannotBeMade) {
  const fs::path folder = cachesFolder() / "ContentFilters";
  const fs::path aside = cachesFolder() / "ContentFilters.aside";
  fs::create_directories(folder);
  fs::rename(folder, aside);
  std::ofstream(folder) << "in the way";
  bool isUnavailable = false;
  view().signalUnavailable().connect([&] { isUnavailable = true; });
  view().update(std::make_shared<const std::string>("<p>text</p>"), HTMLAppearance::light, false);
  EXPECT_TRUE(runUntil([&] { return isUnavailable; }, 20));
  EXPECT_EQ(webkit_web_view_get_uri(page()), nullptr);
  fs::remove(folder);
  fs::rename(aside, folder);
}

TEST_F(PageProtection, APageKeepsNoCookies) {
  std::vector<std::string> received;
  const CountingServer proxy([&](const std::string& request) {
    received.push_back(request);
    return response("Set-Cookie: a=b\r\nContent-Type: image/png\r\n", "none");
  });
  useAsProxy(page(), proxy);
  show("<p>text</p><img src='http://public.example/one'>");
  show("<p>text</p><img src='http://public.example/two'>");
  ASSERT_EQ(received.size(), 2U);
  EXPECT_EQ(received[1].find("Cookie:"), std::string::npos);
  evaluated("try { document.cookie = 'c=d'; } catch (e) {} 0");
  EXPECT_EQ(evaluated("(() => { try { return document.cookie; } catch (e) { return ''; } })()"), "");
}

TEST_F(PageProtection, APageStoresNothing) {
  show("<p>text</p>");
  EXPECT_EQ(
      evaluated("(() => { try { localStorage.a = 1; return 'stored'; } catch (e) { return 'no'; } })()"),
      "no");
  EXPECT_EQ(evaluateAsynchronously(page(),
                                   "try { const r = indexedDB.open('a'); return await new Promise(done => {"
                                   "r.onsuccess = () => done('stored'); r.onerror = () => done('no');"
                                   "r.onblocked = () => done('no'); }); } catch (e) { return 'no'; }"),
            "no");
  EXPECT_EQ(evaluated("typeof caches === 'undefined' || !window.isSecureContext"), "true");
}

TEST_F(PageProtection, APageDownloadsNothing) {
  const CountingServer proxy([&](const std::string&) {
    return response(
        "Content-Type: application/octet-stream\r\nContent-Disposition: attachment; filename=x\r\n", "bytes");
  });
  useAsProxy(page(), proxy);
  struct Seen {
    int started = 0;
    int finished = 0;
  } seen;
  g_signal_connect(webkit_web_view_get_network_session(page()), "download-started",
                   G_CALLBACK(+[](WebKitNetworkSession*, WebKitDownload* download, gpointer data) {
                     ++static_cast<Seen*>(data)->started;
                     g_signal_connect(download, "created-destination",
                                      G_CALLBACK(+[](WebKitDownload*, const char*, gpointer target) {
                                        ++static_cast<Seen*>(target)->finished;
                                      }),
                                      data);
                   }),
                   &seen);
  show(
      "<iframe src='http://public.example/file'></iframe>"
      "<a id=a href='http://public.example/other' download=y>x</a><script>a.click()</script>");
  ASSERT_TRUE(runUntil([&] { return asksFor(proxy, "http://public.example/file"); }));
  letPageSettle(page());
  EXPECT_EQ(seen.finished, 0);
  EXPECT_FALSE(asksFor(proxy, "http://public.example/other"));
  g_signal_handlers_disconnect_by_data(webkit_web_view_get_network_session(page()), &seen);
}

TEST_F(PageProtection, APageOpensNoWindow) {
  show("<p>text</p><script>window.opened = window.open('https://example.org/')</script>");
  EXPECT_EQ(evaluated("String(window.opened)"), "null");
  GListModel* windows = gtk_window_get_toplevels();
  EXPECT_EQ(g_list_model_get_n_items(windows), 1U);
}

TEST_F(PageProtection, APageShowsNoDialogs) {
  show(
      "<p>text</p><script>alert('a'); window.answers = [confirm('b'), prompt('c')]; print();"
      "onbeforeunload = () => 'stay';</script>");
  EXPECT_EQ(evaluated("JSON.stringify(window.answers)"), "[false,null]");
  EXPECT_EQ(g_list_model_get_n_items(gtk_window_get_toplevels()), 1U);
  show("<p id=b>the next one</p>");
  EXPECT_EQ(evaluated("document.getElementById('b') !== null"), "true");
}

TEST_F(PageProtection, APageGetsNoPermissions) {
  show("<p>text</p>");
  EXPECT_EQ(evaluateAsynchronously(
                page(),
                "if (!navigator.geolocation) return 'denied'; return await new Promise(done => "
                "navigator.geolocation.getCurrentPosition(() => done('granted'), () => done('denied')));"),
            "denied");
  EXPECT_EQ(evaluateAsynchronously(page(),
                                   "if (!window.Notification) return 'denied';"
                                   "return await Notification.requestPermission();"),
            "denied");
  EXPECT_EQ(evaluateAsynchronously(page(),
                                   "try { await navigator.clipboard.readText(); return 'read'; } "
                                   "catch (e) { return 'denied'; }"),
            "denied");
}

TEST_F(PageProtection, APageCapturesNoMedia) {
  show("<p>text</p>");
  EXPECT_EQ(evaluateAsynchronously(page(),
                                   "try { await navigator.mediaDevices.getUserMedia({audio: true});"
                                   "return 'captured'; } catch (e) { return 'no'; }"),
            "no");
  EXPECT_EQ(evaluateAsynchronously(page(),
                                   "try { await navigator.mediaDevices.getDisplayMedia();"
                                   "return 'captured'; } catch (e) { return 'no'; }"),
            "no");
}

TEST_F(PageProtection, APageHasNoServiceWorkers) {
  show("<p>text</p>");
  EXPECT_EQ(evaluated("typeof navigator.serviceWorker"), "undefined");
  EXPECT_EQ(evaluated("typeof SharedWorker"), "undefined");
}

TEST_F(PageProtection, APageHasNoPeerConnections) {
  show("<p>text</p>");
  EXPECT_EQ(evaluated("typeof RTCPeerConnection"), "undefined");
}

TEST_F(PageProtection, APageReadsNoFiles) {
  const TemporaryFolder folder;
  std::ofstream(folder / "a.svg")
      << "<svg xmlns='http://www.w3.org/2000/svg' width='20' height='20'><rect width='9' height='9'/></svg>";
  const std::string file = "file://" + (folder / "a.svg").string();
  show("<img id=a src='" + file + "'><iframe id=f src='" + file +
       "'></iframe><script>window.read = 'waits';"
       "fetch('" +
       file + "').then(() => { window.read = 'read' }, () => { window.read = 'no' })</script>");
  letPageSettle(page());
  EXPECT_EQ(evaluated("document.getElementById('a').naturalWidth"), "0");
  EXPECT_EQ(evaluated("window.read"), "no");
  EXPECT_EQ(evaluated("(() => { try { return f.contentDocument.URL } catch (e) { return 'other' } })()")
                .find("file:"),
            std::string::npos);
}

TEST_F(PageProtection, AnInlinePictureIsShown) {
  show(std::string("<img id=a src='") + picture + "'>");
  EXPECT_EQ(evaluated("document.getElementById('a').naturalWidth"), "1");
}

TEST_F(PageProtection, ARemotePictureIsAskedFor) {
  const CountingServer proxy([](const std::string&) { return response("Content-Type: image/png\r\n", "x"); });
  useAsProxy(page(), proxy);
  show("<img src='http://public.example/a.png'>");
  EXPECT_TRUE(asksFor(proxy, "http://public.example/a.png"));
}

TEST_F(PageProtection, AddressesOfTheLocalNetworkAreNotAskedFor) {
  const CountingServer proxy([](const std::string&) { return response("Content-Type: image/png\r\n", "x"); });
  useAsProxy(page(), proxy);
  std::string html = "<img src='http://public.example/a'><img src='http://172.15.0.1/a'>";
  for (const char* host : {"127.0.0.1",        "127.1",          "0x7f000001",
                           "2130706433",       "0177.0.0.1",     "127.8.9.10:631",
                           "u:p@127.0.0.1",    "0.0.0.0",        "10.0.0.1",
                           "172.16.0.1",       "172.31.255.255", "192.168.1.1",
                           "169.254.169.254",  "100.64.0.1",     "224.0.0.1",
                           "255.255.255.255",  "localhost",      "LOCALHOST",
                           "localhost.",       "a.localhost",    "printer",
                           "router.lan",       "nas.local",      "host.internal",
                           "x.home.arpa",      "[::1]",          "[::]",
                           "[fe80::1]",        "[fc00::1]",      "[::ffff:127.0.0.1]",
                           "[::ffff:c0a8:101]"}) {
    html += std::string("<img src='http://") + host + "/x'><img src='https://" + host + "/x'>";
  }
  show(html);
  letPageSettle(page());
  EXPECT_TRUE(asksFor(proxy, "http://public.example/a"));
  EXPECT_TRUE(asksFor(proxy, "http://172.15.0.1/a"));
  EXPECT_EQ(proxy.requests().size(), 2U) << testing::PrintToString(proxy.requests());
}

// Every way leads to a public address first, which sends it on to this computer.
class Redirection : public PageTest,
                    public testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(Redirection, DoesNotLeadToThisComputer) {
  const CountingServer proxy([](const std::string& request) {
    return request.find("public.example") != std::string::npos ? redirection("http://127.0.0.1:631/secret")
                                                               : response("", "secret");
  });
  useAsProxy(page(), proxy);
  show(GetParam().second);
  EXPECT_TRUE(runUntil([&] { return asksFor(proxy, "http://public.example/"); }, 20));
  letPageSettle(page());
  EXPECT_FALSE(asksFor(proxy, "http://127.0.0.1"));
}

INSTANTIATE_TEST_SUITE_P(
    Of, Redirection,
    testing::Values(
        std::pair("APicture", "<img src='http://public.example/a'>"),
        std::pair("AStyleSheet", "<link rel=stylesheet href='http://public.example/a'>"),
        std::pair("AScript", "<script src='http://public.example/a'></script>"),
        std::pair("AFrame", "<iframe src='http://public.example/a'></iframe>"),
        std::pair("AnObject", "<object data='http://public.example/a'></object>"),
        std::pair("AFetch", "<script>fetch('http://public.example/a', {mode: 'no-cors'})</script>"),
        std::pair("ABeacon", "<script>navigator.sendBeacon('http://public.example/a', 'x')</script>"),
        std::pair(
            "ARequest",
            "<script>x = new XMLHttpRequest(); x.open('GET', 'http://public.example/a'); x.send()</script>"),
        std::pair(
            "ARefresh",
            "<html><head><meta http-equiv=refresh content='0; url=http://public.example/a'></head></html>"),
        std::pair("AForm",
                  "<form id=f method=post action='http://public.example/a'></form><script>"
                  "setTimeout(() => f.submit())</script>")),
    [](const auto& tested) { return std::string(tested.param.first); });

TEST_F(PageProtection, APageDoesNotGoBackToAnotherMessage) {
  show("<p id=first>the first message</p>");
  show("<p id=second>the second message</p>");
  evaluated("history.back(); 0");
  letPageSettle(page());
  EXPECT_EQ(evaluated("document.getElementById('second') !== null"), "true");
  evaluated("location.reload(); 0");
  letPageSettle(page());
  EXPECT_EQ(evaluated("document.getElementById('second') !== null"), "true");
}

TEST_F(PageProtection, APageLeavesNothingBehindForTheNextOne) {
  show("<p>first</p><script>window.name = 'secret'; window.mark = 'secret'</script>");
  show("<p>second</p>");
  EXPECT_EQ(evaluated("String(window.mark)"), "undefined");
  EXPECT_EQ(evaluated("window.name"), "");
}

TEST_F(PageProtection, APageThatIsClearedRunsNoLonger) {
  show("<p id=a>text</p><script>window.mark = 7</script>");
  view().clear();
  EXPECT_TRUE(runUntil([&] { return evaluated("String(window.mark)") == "undefined"; }, 20));
  EXPECT_EQ(evaluated("document.getElementById('a') === null"), "true");
}

}  // namespace
}  // namespace tidewrack
