// What a mail tries in order to reach the services of this computer.

#include <ostream>
#include <string>
#include <vector>

#include <webkit/webkit.h>

#include "ui/page_support.h"

namespace tidewrack {
namespace {

/// One way to make a page ask a server. "@AT" stands for the server's address, "@HOST" for its host.
struct Way {
  const char* name;
  const char* head;
  const char* body;
  bool isReal;  ///< A web view without protection really asks; some ways WebKit closes by itself.
};

std::ostream& operator<<(std::ostream& out, const Way& way) {
  return out << way.name;
}

const Way ways[] = {
    {"Image", "", "<img src='@AT/img'>", true},
    {"ImageSet", "", "<img srcset='@AT/one 1x, @AT/two 2x'>", true},
    {"PictureSource", "", "<picture><source srcset='@AT/one'><img></picture>", true},
    {"StyleSheet", "<link rel=stylesheet href='@AT/css'>", "text", true},
    {"StyleImport", "<style>@import url('@AT/import');</style>", "text", true},
    {"Font", "<style>@font-face{font-family:f;src:url('@AT/font')}body{font-family:f}</style>", "text", true},
    {"Background", "<style>body{background:url('@AT/background')}</style>", "text", true},
    {"Cursor", "<style>body{cursor:url('@AT/cursor'),auto}</style>", "text", true},
    {"Frame", "", "<iframe src='@AT/frame'></iframe>", true},
    {"FrameOfDocument", "", "<iframe srcdoc=\"<img src='@AT/inner'>\"></iframe>", true},
    {"Object", "", "<object data='@AT/object'></object>", true},
    {"Embed", "", "<embed src='@AT/embed'>", true},
    {"Video", "", "<video src='@AT/video' autoplay muted></video>", false},
    {"Poster", "", "<video poster='@AT/poster'></video>", true},
    {"Audio", "", "<audio src='@AT/audio' autoplay></audio>", false},
    {"Track", "", "<video><track default src='@AT/track'></video>", false},
    {"Script", "<script src='@AT/script'></script>", "text", true},
    {"ModuleScript", "<script type=module src='@AT/module'></script>", "text", true},
    {"VectorUse", "", "<svg><use href='@AT/use#a'></use></svg>", false},
    {"VectorImage", "", "<svg><image href='@AT/image'></image></svg>", true},
    {"InputImage", "", "<input type=image src='@AT/input'>", true},
    {"Icon", "<link rel=icon href='@AT/icon'>", "text", false},
    {"Preconnect", "<link rel=preconnect href='@AT'>", "text", true},
    {"DNSPrefetch", "<link rel=dns-prefetch href='@AT'>", "text", false},
    {"Prefetch", "<link rel=prefetch href='@AT/next'>", "text", false},
    {"Preload", "<link rel=preload as=image href='@AT/preload'>", "text", true},
    {"ModulePreload", "<link rel=modulepreload href='@AT/preload'>", "text", true},
    {"Manifest", "<link rel=manifest href='@AT/manifest'>", "text", false},
    {"MetaRefresh", "<meta http-equiv=refresh content='0; url=@AT/refresh'>", "text", true},
    {"Fetch", "", "<script>fetch('@AT/fetch', {mode: 'no-cors'})</script>", true},
    {"KeptFetch", "", "<script>fetch('@AT/f', {mode: 'no-cors', method: 'POST', keepalive: true})</script>",
     true},
    {"XMLHttpRequest", "",
     "<script>const x = new XMLHttpRequest(); x.open('GET', '@AT/xhr'); x.send()</script>", true},
    {"WebSocket", "", "<script>new WebSocket('ws://@HOST/socket')</script>", true},
    {"EventSource", "", "<script>new EventSource('@AT/events')</script>", true},
    {"Beacon", "", "<script>navigator.sendBeacon('@AT/beacon', 'x')</script>", true},
    {"Ping", "", "<a id=a href='#x' ping='@AT/ping'>x</a><script>a.click()</script>", false},
    {"Worker", "",
     "<script>new Worker(URL.createObjectURL(new Blob([\"fetch('@AT/w', {mode: 'no-cors'})\"])))</script>",
     true},
    {"ServiceWorker", "", "<script>navigator.serviceWorker.register('@AT/worker')</script>", false},
    {"FormPost", "",
     "<form id=f method=post action='@AT/form'><input name=a value=b></form><script>f.submit()</script>",
     true},
    {"FormInFrame", "",
     "<iframe name=n></iframe><form id=f method=post action='@AT/form' target=n></form>"
     "<script>f.submit()</script>",
     true},
    {"Location", "", "<script>location.href = '@AT/location'</script>", true},
    {"NewWindow", "", "<script>window.open('@AT/window')</script>", false},
    {"WindowInFrame", "", "<iframe name=n></iframe><script>window.open('@AT/window', 'n')</script>", true},
    {"Link", "", "<a id=a href='@AT/link'>x</a><script>a.click()</script>", true},
    {"Download", "", "<a id=a href='@AT/download' download=x>x</a><script>a.click()</script>", true},
    {"PeerConnection", "",
     "<script>const p = new RTCPeerConnection({iceServers: [{urls: 'turn:@HOST?transport=tcp',"
     "username: 'u', credential: 'c'}]}); p.createDataChannel('d');"
     "p.createOffer().then(o => p.setLocalDescription(o))</script>",
     false},
};

std::string replaced(std::string text, const std::string& what, const std::string& with) {
  for (auto place = text.find(what); place != std::string::npos;
       place = text.find(what, place + with.size())) {
    text.replace(place, what.size(), with);
  }
  return text;
}

/// A page that tries this way to a host, which is given with its port.
std::string pageOf(const Way& way, const std::string& host) {
  const std::string page = std::string("<!doctype html><html><head>") + way.head +
                           "</head><body><p id=text>text</p>" + way.body + "</body></html>";
  return replaced(replaced(page, "@AT", "http://" + host), "@HOST", host);
}

class HostileMail : public PageTest, public testing::WithParamInterface<Way> {};

TEST_P(HostileMail, ReachesNoServiceOfThisComputer) {
  const CountingServer server;
  show(pageOf(GetParam(), server.host()));
  letPageSettle(page());
  EXPECT_EQ(server.visits(), 0) << testing::PrintToString(server.requests());
  EXPECT_EQ(evaluated("document.getElementById('text').textContent"), "text");
}

// A public name may belong to any address; whose name it is decides.
TEST_P(HostileMail, ReachesNoServiceOfThisComputerByAPublicName) {
  const CountingServer server;
  GuardedProxyOptions options;
  options.resolve = [](const std::string&, GCancellable*) { return std::vector<std::string>{"127.0.0.1"}; };
  goThrough(options);
  show(pageOf(GetParam(), "tracker.example:" + std::to_string(server.port())));
  letPageSettle(page());
  EXPECT_EQ(server.visits(), 0) << testing::PrintToString(server.requests());
}

// The ways lead to a server indeed where nothing stands between.
TEST_P(HostileMail, ReachesAServerOfThisComputerFromAnUnprotectedPage) {
  if (!GetParam().isReal) {
    GTEST_SKIP() << "closed by the engine itself";
  }
  const CountingServer server;
  GtkWidget* unprotected = webkit_web_view_new();
  present(*Glib::wrap(unprotected));
  webkit_web_view_load_html(WEBKIT_WEB_VIEW(unprotected), pageOf(GetParam(), server.host()).c_str(), nullptr);
  EXPECT_TRUE(runUntil([&] { return server.visits() > 0; }, 20));
}

INSTANTIATE_TEST_SUITE_P(Way, HostileMail, testing::ValuesIn(ways),
                         [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace
}  // namespace tidewrack
