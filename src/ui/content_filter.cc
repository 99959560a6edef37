#include "ui/content_filter.h"

#include <array>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/files.h"

namespace tidewrack::ui {
namespace {

// What goes through. WebKit's expressions know no alternation, so each scheme is a rule.
constexpr std::array allowed = {"^data:", "^cid:", "^about:", "^https?://"};

// Hosts of this computer and of its network, as they stand behind "http://user@": the same ranges as
// isLocalHost (platform/local_host.h). WebKit hands over addresses in their canonical spelling.
constexpr std::array localNames = {
    R"([^./:\[]*\.?)",  // a name without a dot, "localhost" among them
    R"([^/:]*\.localhost\.?)", R"([^/:]*\.local\.?)",      R"([^/:]*\.internal\.?)",
    R"([^/:]*\.lan\.?)",       R"([^/:]*\.home\.arpa\.?)", R"(\[.*)",  // no mail needs an IPv6 address
};

// The beginnings of local IPv4 addresses; the missing numbers follow.
struct AddressRange {
  const char* beginning;
  int missingNumbers;
};
constexpr std::array localAddresses = {
    AddressRange{"0", 3},
    AddressRange{"10", 3},
    AddressRange{"127", 3},
    AddressRange{"100.6[4-9]", 2},
    AddressRange{"100.[7-9][0-9]", 2},
    AddressRange{"100.1[01][0-9]", 2},
    AddressRange{"100.12[0-7]", 2},
    AddressRange{"169.254", 2},
    AddressRange{"172.1[6-9]", 2},
    AddressRange{"172.2[0-9]", 2},
    AddressRange{"172.3[01]", 2},
    AddressRange{"192.0.0", 1},
    AddressRange{"192.168", 2},
    AddressRange{"22[4-9]", 3},
    AddressRange{"23[0-9]", 3},
    AddressRange{"24[0-9]", 3},
    AddressRange{"25[0-5]", 3},
};

std::string addressExpression(const AddressRange& range) {
  std::string expression;
  for (const char c : std::string_view(range.beginning)) {
    expression += c == '.' ? std::string("\\.") : std::string(1, c);
  }
  for (int number = 0; number < range.missingNumbers; ++number) {
    expression += R"(\.[0-9]*)";
  }
  return expression + R"(\.?)";
}

std::string jsonString(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
    }
    quoted += c;
  }
  return quoted + '"';
}

std::string rule(const std::string& expression, const char* action) {
  return R"({"trigger":{"url-filter":)" + jsonString(expression) + R"(},"action":{"type":")" + action +
         R"("}})";
}

struct Attachment {
  WebKitUserContentFilterStore* store;
  WebKitUserContentManager* manager;
  std::function<void(bool)> done;
};

void filterSaved(GObject* source, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<Attachment> attachment(static_cast<Attachment*>(data));
  GError* error = nullptr;
  WebKitUserContentFilter* filter =
      webkit_user_content_filter_store_save_finish(WEBKIT_USER_CONTENT_FILTER_STORE(source), result, &error);
  const bool cancelled = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE;
  if (filter != nullptr && !cancelled) {
    webkit_user_content_manager_add_filter(attachment->manager, filter);
  }
  if (!cancelled) {
    if (error != nullptr) {
      g_warning("The content filter could not be made: %s", error->message);
    }
    attachment->done(filter != nullptr);
  }
  if (filter != nullptr) {
    webkit_user_content_filter_unref(filter);
  }
  g_clear_error(&error);
  g_object_unref(attachment->manager);
  g_object_unref(attachment->store);
}

}  // namespace

std::string contentFilterRules() {
  std::string json = "[" + rule(".*", "block");
  for (const char* expression : allowed) {
    json += "," + rule(expression, "ignore-previous-rules");
  }
  const auto block = [&json](const std::string& host) {
    json += "," + rule("^https?://([^/@]*@)?" + host + "[:/]", "block");
  };
  for (const char* name : localNames) {
    block(name);
  }
  for (const auto& range : localAddresses) {
    block(addressExpression(range));
  }
  return json + "]";
}

void attachContentFilter(WebKitUserContentManager* manager, GCancellable* cancellable,
                         std::function<void(bool succeeded)> done) {
  const auto folder = cachesFolder() / "ContentFilters";
  auto* store = webkit_user_content_filter_store_new(folder.c_str());
  const std::string rules = contentFilterRules();
  GBytes* bytes = g_bytes_new(rules.data(), rules.size());
  auto* attachment =
      new Attachment{store, WEBKIT_USER_CONTENT_MANAGER(g_object_ref(manager)), std::move(done)};
  webkit_user_content_filter_store_save(store, "mail", bytes, cancellable, &filterSaved, attachment);
  g_bytes_unref(bytes);
}

}  // namespace tidewrack::ui
