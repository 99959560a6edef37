#include "ui/html_view.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "reading/link_policy.h"
#include "ui/content_filter.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

// Features of the engine that a mail has no use for and that no property turns off. With the first one, the
// engine connects to where a clicked link leads before it asks whether to go there, past the content filter.
void disableFeatures(WebKitSettings* settings) {
  static constexpr std::array<std::string_view, 8> unwanted = {"LinkPreconnect",  "LinkPreconnectEarlyHints",
                                                               "LinkDNSPrefetch", "LinkPrefetch",
                                                               "ServiceWorkers",  "SharedWorker",
                                                               "WebTransport",    "Notifications"};
  WebKitFeatureList* features = webkit_settings_get_all_features();
  for (gsize index = 0; index < webkit_feature_list_get_length(features); ++index) {
    WebKitFeature* feature = webkit_feature_list_get(features, index);
    if (std::find(unwanted.begin(), unwanted.end(), webkit_feature_get_identifier(feature)) !=
        unwanted.end()) {
      webkit_settings_set_feature_enabled(settings, feature, FALSE);
    }
  }
  webkit_feature_list_unref(features);
}

WebKitSettings* makeSettings() {
  // Scripts of the mail run: they have no network to talk to but the open one, and no storage.
  WebKitSettings* settings = webkit_settings_new_with_settings(
      "enable-javascript", TRUE, "javascript-can-open-windows-automatically", FALSE,
      "javascript-can-access-clipboard", FALSE, "enable-html5-database", FALSE, "enable-html5-local-storage",
      FALSE, "enable-page-cache", FALSE, "enable-media", FALSE, "enable-mediasource", FALSE,
      "enable-media-stream", FALSE, "enable-webrtc", FALSE, "enable-encrypted-media", FALSE, "enable-webgl",
      FALSE, "enable-webaudio", FALSE, "enable-fullscreen", FALSE, "allow-file-access-from-file-urls", FALSE,
      "allow-universal-access-from-file-urls", FALSE, "allow-modal-dialogs", FALSE,
      "enable-back-forward-navigation-gestures", FALSE, "enable-dns-prefetching", FALSE,
      "enable-developer-extras", FALSE, "media-playback-requires-user-gesture", TRUE,
      "hardware-acceleration-policy", WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER, "default-charset", "UTF-8",
      nullptr);
  disableFeatures(settings);
  return settings;
}

// Of the context menu only what copies stays.
void keepCopyItems(WebKitContextMenu* menu) {
  static constexpr std::array kept = {WEBKIT_CONTEXT_MENU_ACTION_COPY,
                                      WEBKIT_CONTEXT_MENU_ACTION_COPY_LINK_TO_CLIPBOARD,
                                      WEBKIT_CONTEXT_MENU_ACTION_SELECT_ALL};
  GList* next = nullptr;
  for (GList* node = webkit_context_menu_get_items(menu); node != nullptr; node = next) {
    next = node->next;
    auto* item = WEBKIT_CONTEXT_MENU_ITEM(node->data);
    const auto action = webkit_context_menu_item_get_stock_action(item);
    if (std::find(kept.begin(), kept.end(), action) == kept.end()) {
      webkit_context_menu_remove(menu, item);
    }
  }
}

}  // namespace

HTMLView::HTMLView(std::shared_ptr<const GuardedProxy> proxy) : proxy_(std::move(proxy)) {
  set_expand(true);
  cancellable_ = g_cancellable_new();
  makeView();
  refuseEverythingElse();
  watch_ =
      std::make_unique<PageWatch>(view_, [this](PageWatch::Culprit culprit) { showPageBehindHang(culprit); });
  attachContentFilter(webkit_web_view_get_user_content_manager(view_), cancellable_, [this](bool succeeded) {
    filter_ = succeeded ? FilterState::attached : FilterState::failed;
    if (document_) {
      loadCurrent();
    }
  });
}

HTMLView::~HTMLView() {
  g_cancellable_cancel(cancellable_);
  g_object_unref(cancellable_);
  watch_.reset();
  g_signal_handlers_disconnect_by_data(view_, this);
  g_object_unref(view_);
}

WebKitNetworkSession* HTMLView::makeSession() const {
  WebKitNetworkSession* session = webkit_network_session_new_ephemeral();
  webkit_cookie_manager_set_accept_policy(webkit_network_session_get_cookie_manager(session),
                                          WEBKIT_COOKIE_POLICY_ACCEPT_NEVER);
  // The engine hands names over as they are; without the proxy it reaches nothing.
  WebKitNetworkProxySettings* proxy = webkit_network_proxy_settings_new(proxy_->address().c_str(), nullptr);
  webkit_network_session_set_proxy_settings(session, WEBKIT_NETWORK_PROXY_MODE_CUSTOM, proxy);
  webkit_network_proxy_settings_free(proxy);
  g_signal_connect(session, "download-started",
                   G_CALLBACK(+[](WebKitNetworkSession*, WebKitDownload* download, gpointer) {
                     webkit_download_cancel(download);
                   }),
                   nullptr);
  return session;
}

void HTMLView::makeView() {
  WebKitNetworkSession* session = makeSession();
  WebKitSettings* settings = makeSettings();
  WebKitUserContentManager* manager = webkit_user_content_manager_new();
  view_ = WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", session, "settings", settings,
                                       "user-content-manager", manager, nullptr));
  g_object_ref_sink(view_);
  // A message is seldom shown twice; what its page used is better given back.
  webkit_web_context_set_cache_model(webkit_web_view_get_context(view_), WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
  g_object_unref(manager);
  g_object_unref(settings);
  g_object_unref(session);

  auto* widget = Glib::wrap(GTK_WIDGET(view_));
  widget->set_expand(true);
  setIdentifier(*widget, "messageDetail.html");
  append(*widget);

  g_signal_connect(view_, "decide-policy",
                   G_CALLBACK(+[](WebKitWebView*, WebKitPolicyDecision* decision,
                                  WebKitPolicyDecisionType type, gpointer self) -> gboolean {
                     return static_cast<HTMLView*>(self)->decidePolicy(decision, type);
                   }),
                   this);
  g_signal_connect(view_, "load-changed",
                   G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent event, gpointer self) {
                     if (event == WEBKIT_LOAD_FINISHED) {
                       static_cast<HTMLView*>(self)->loadEnded();
                     }
                   }),
                   this);
  g_signal_connect(view_, "web-process-terminated",
                   G_CALLBACK(+[](WebKitWebView*, WebKitWebProcessTerminationReason, gpointer self) {
                     auto* html = static_cast<HTMLView*>(self);
                     if (!html->isTerminating_) {
                       html->watch_->stop();
                       html->giveUp();
                     }
                   }),
                   this);
  g_signal_connect(view_, "notify::is-web-process-responsive",
                   G_CALLBACK(+[](WebKitWebView* view, GParamSpec*, gpointer self) {
                     if (webkit_web_view_get_is_web_process_responsive(view) == FALSE) {
                       static_cast<HTMLView*>(self)->watch_->ask();
                     }
                   }),
                   this);
}

void HTMLView::refuseEverythingElse() {
  g_signal_connect(
      view_, "context-menu",
      G_CALLBACK(+[](WebKitWebView*, WebKitContextMenu* menu, WebKitHitTestResult*, gpointer) -> gboolean {
        keepCopyItems(menu);
        return webkit_context_menu_get_n_items(menu) == 0;
      }),
      this);
  g_signal_connect(view_, "permission-request",
                   G_CALLBACK(+[](WebKitWebView*, WebKitPermissionRequest* request, gpointer) -> gboolean {
                     webkit_permission_request_deny(request);
                     return TRUE;
                   }),
                   this);
  g_signal_connect(
      view_, "create",
      G_CALLBACK(+[](WebKitWebView*, WebKitNavigationAction*, gpointer) -> GtkWidget* { return nullptr; }),
      this);
  const auto refuse = +[](WebKitWebView*, gpointer, gpointer) -> gboolean { return TRUE; };
  g_signal_connect(
      view_, "script-dialog",
      G_CALLBACK(+[](WebKitWebView*, WebKitScriptDialog* dialog, gpointer) -> gboolean {
        // Whether the page may be left; otherwise a mail could keep the next one away.
        if (webkit_script_dialog_get_dialog_type(dialog) == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
          webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
        }
        return TRUE;
      }),
      this);
  g_signal_connect(view_, "print", G_CALLBACK(refuse), this);
  g_signal_connect(view_, "show-notification", G_CALLBACK(refuse), this);
  g_signal_connect(view_, "run-file-chooser",
                   G_CALLBACK(+[](WebKitWebView*, WebKitFileChooserRequest* request, gpointer) -> gboolean {
                     webkit_file_chooser_request_cancel(request);
                     return TRUE;
                   }),
                   this);
  g_signal_connect(
      view_, "authenticate",
      G_CALLBACK(+[](WebKitWebView*, WebKitAuthenticationRequest* request, gpointer) -> gboolean {
        webkit_authentication_request_cancel(request);
        return TRUE;
      }),
      this);
  // A part that does not load leaves its place empty; an error page would take the place of the mail.
  g_signal_connect(view_, "load-failed",
                   G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent, const char*, GError*,
                                  gpointer) -> gboolean { return TRUE; }),
                   this);
}

void HTMLView::update(const SharedHTML& html, HTMLAppearance appearance, bool invertContent) {
  applyAppearance(appearance);
  if (const auto document = memory_.documentToLoad(html, appearance, invertContent)) {
    styleInverted(appearance, invertContent);
    load(*document);
  }
}

void HTMLView::clear() {
  document_.reset();
  if (memory_.isEmpty()) {
    return;
  }
  memory_.forget();
  if (filter_ == FilterState::attached) {
    // Nobody waits for this page: a good moment for a fresh process.
    if (pagesOfProcess_ >= pagesBeforePause) {
      terminateQuietly();
    }
    webkit_web_view_load_plain_text(view_, "");
    watch_->start(patience_);
  }
}

// The filter turns a page over that was made for the other appearance, but what names no colour of its own,
// text, links and form controls, has the shown one's: turned over, it would be dark on dark. The page's own
// rules hold against this one where they name more than the body.
void HTMLView::styleInverted(HTMLAppearance appearance, bool invertContent) {
  WebKitUserContentManager* manager = webkit_web_view_get_user_content_manager(view_);
  webkit_user_content_manager_remove_all_style_sheets(manager);
  if (!invertContent || appearance != HTMLAppearance::dark) {
    return;
  }
  // The words in place of a picture are turned over twice and so stand on black as they are, if they do not
  // stand on a colour that the picture brings along.
  const std::string rules =
      "html body { color-scheme: light; color: " + std::string(textColor(HTMLAppearance::light)) +
      "; } html body img:not([style*=\"background\"]) { color: " +
      std::string(textColor(HTMLAppearance::dark)) + " !important; }";
  WebKitUserStyleSheet* sheet = webkit_user_style_sheet_new(
      rules.c_str(), WEBKIT_USER_CONTENT_INJECT_TOP_FRAME, WEBKIT_USER_STYLE_LEVEL_AUTHOR, nullptr, nullptr);
  webkit_user_content_manager_add_style_sheet(manager, sheet);
  webkit_user_style_sheet_unref(sheet);
}

void HTMLView::load(const std::string& document) {
  // As bytes: a text would end at the first zero byte.
  document_ = {g_bytes_new(document.data(), document.size()), &g_bytes_unref};
  if (filter_ != FilterState::pending) {
    loadCurrent();
  }
}

void HTMLView::loadCurrent() {
  if (filter_ != FilterState::attached) {
    giveUp();
    return;
  }
  if (isProcessWorn()) {
    terminateQuietly();
  }
  ++pagesOfProcess_;
  bytesOfProcess_ += g_bytes_get_size(document_.get());
  // Without a base every relative address leads nowhere.
  webkit_web_view_load_bytes(view_, document_.get(), "text/html", "UTF-8", nullptr);
  watch_->start(patience_ +
                patiencePerMegabyte * static_cast<long>(g_bytes_get_size(document_.get()) >> 20U));
}

void HTMLView::showPageBehindHang(PageWatch::Culprit culprit) {
  terminateQuietly();
  if (!document_) {
    return;
  }
  if (culprit == PageWatch::Culprit::before) {
    loadCurrent();
  } else {
    giveUp();
  }
}

void HTMLView::loadEnded() {
  watch_->loadEnded();
  if (!memory_.isEmpty()) {
    loaded_.emit();
  }
}

// The engine collects the pages that are gone when it likes to, with hundreds of megabytes of them by then.
bool HTMLView::isProcessWorn() const {
  return (pagesOfProcess_ >= pagesOfWornProcess && bytesOfProcess_ >= bytesOfWornProcess) ||
         pagesOfProcess_ >= mostPages;
}

void HTMLView::terminateQuietly() {
  watch_->stop();
  pagesOfProcess_ = 0;
  bytesOfProcess_ = 0;
  isTerminating_ = true;
  webkit_web_view_terminate_web_process(view_);
  isTerminating_ = false;
}

void HTMLView::giveUp() {
  memory_.forget();
  document_.reset();
  unavailable_.emit();
}

void HTMLView::applyAppearance(HTMLAppearance appearance) {
  const GdkRGBA colour = appearance == HTMLAppearance::dark ? GdkRGBA{0.11F, 0.11F, 0.12F, 1.0F}
                                                            : GdkRGBA{1.0F, 1.0F, 1.0F, 1.0F};
  webkit_web_view_set_background_color(view_, &colour);
}

// What the engine cannot show would become a download.
bool HTMLView::decideResponse(WebKitPolicyDecision* decision) {
  if (webkit_response_policy_decision_is_mime_type_supported(WEBKIT_RESPONSE_POLICY_DECISION(decision)) ==
      FALSE) {
    webkit_policy_decision_ignore(decision);
    return true;
  }
  webkit_policy_decision_use(decision);
  return true;
}

bool HTMLView::decidePolicy(WebKitPolicyDecision* decision, WebKitPolicyDecisionType type) {
  if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
    return decideResponse(decision);
  }
  WebKitNavigationAction* action =
      webkit_navigation_policy_decision_get_navigation_action(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
  const char* uri = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  const std::string url = uri != nullptr ? uri : "";
  const auto kind = webkit_navigation_action_get_navigation_type(action);
  const bool isLink = kind == WEBKIT_NAVIGATION_TYPE_LINK_CLICKED;
  if (isLink && !url.empty()) {
    if (webkit_navigation_action_is_user_gesture(action) != FALSE && mayOpenOutside(url)) {
      openLink_.emit(url);
    }
    webkit_policy_decision_ignore(decision);
    return true;
  }
  // Mail opens no windows, and goes nowhere that its pictures may not come from. What lies behind it in the
  // history are other messages.
  const bool isHistory = kind == WEBKIT_NAVIGATION_TYPE_BACK_FORWARD || kind == WEBKIT_NAVIGATION_TYPE_RELOAD;
  if (type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION || isHistory || (!url.empty() && !mayLoad(url))) {
    webkit_policy_decision_ignore(decision);
    return true;
  }
  webkit_policy_decision_use(decision);
  return true;
}

void HTMLView::zoomIn() {
  setZoom(webkit_web_view_get_zoom_level(view_) + zoomStep);
}

void HTMLView::zoomOut() {
  setZoom(webkit_web_view_get_zoom_level(view_) - zoomStep);
}

void HTMLView::resetZoom() {
  setZoom(1.0);
}

void HTMLView::setZoom(double zoom) {
  webkit_web_view_set_zoom_level(view_, std::clamp(zoom, minimumZoom, maximumZoom));
}

}  // namespace tidewrack::ui
