#include "platform/desktop_services.h"

#include <memory>
#include <string>

#include <gio/gio.h>

#include "platform/failure.h"
#include "platform/files.h"
#include "platform/localized.h"
#include "platform/log.h"

namespace tidewrack {
namespace {

constexpr int answerMilliseconds = 5000;

template <typename Object>
using Owned = std::unique_ptr<Object, decltype(&g_object_unref)>;

template <typename Object>
Owned<Object> owned(Object* object) {
  return {object, &g_object_unref};
}

struct ErrorDeleter {
  void operator()(GError* error) const { g_error_free(error); }
};
using OwnedError = std::unique_ptr<GError, ErrorDeleter>;

Owned<GFile> fileAt(const std::filesystem::path& path) {
  return owned(g_file_new_for_path(path.c_str()));
}

std::string uriOf(GFile* file) {
  char* uri = g_file_get_uri(file);
  std::string text(uri);
  g_free(uri);
  return text;
}

void logFailure(const GError& error) {
  Logger::of("Export").error("No se pudo mostrar el archivo en el gestor de archivos: %s", {error.message});
}

void openFolder(GFile* file) {
  const auto folder = owned(g_file_get_parent(file));
  const auto ended = [](GObject*, GAsyncResult* result, gpointer) {
    GError* error = nullptr;
    if (g_app_info_launch_default_for_uri_finish(result, &error) == FALSE) {
      logFailure(*OwnedError(error));
    }
  };
  g_app_info_launch_default_for_uri_async(uriOf(folder ? folder.get() : file).c_str(), nullptr, nullptr,
                                          ended, nullptr);
}

// The file manager has answered, or there is none. `data` is the file.
void answered(GObject* connection, GAsyncResult* result, gpointer data) {
  const auto file = owned(G_FILE(data));
  GError* error = nullptr;
  GVariant* answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, &error);
  if (answer != nullptr) {
    g_variant_unref(answer);
    return;
  }
  const OwnedError failure(error);
  openFolder(file.get());
}

void connected(GObject*, GAsyncResult* result, gpointer data) {
  auto file = owned(G_FILE(data));
  GError* error = nullptr;
  const auto connection = owned(g_bus_get_finish(result, &error));
  if (!connection) {
    const OwnedError failure(error);
    openFolder(file.get());
    return;
  }
  const std::string uri = uriOf(file.get());
  const char* const uris[] = {uri.c_str(), nullptr};
  g_dbus_connection_call(connection.get(), "org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                         "org.freedesktop.FileManager1", "ShowItems", g_variant_new("(^ass)", uris, ""),
                         nullptr, G_DBUS_CALL_FLAGS_NONE, answerMilliseconds, nullptr, &answered,
                         file.release());
}

}  // namespace

void moveToTrash(const std::filesystem::path& path) {
  GError* error = nullptr;
  if (g_file_trash(fileAt(path).get(), nullptr, &error) == FALSE) {
    const OwnedError failure(error);
    throw FileFailure(formatText(localized("file_error_trash", "“%@” could not be moved to the trash: %@.",
                                           "File failure: name of the file, the system's reason"),
                                 {displayPath(path.filename()), std::string(failure->message)}));
  }
}

void revealInFileManager(const std::filesystem::path& file) {
  g_bus_get(G_BUS_TYPE_SESSION, nullptr, &connected, fileAt(file).release());
}

}  // namespace tidewrack
