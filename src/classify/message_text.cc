#include "classify/message_text.h"

#include "mail/html_text.h"

namespace tidewrack {

void forEachSearchableText(const EmailMessage& message, std::string& room,
                           const std::function<void(std::string_view)>& visit) {
  const auto visitAddress = [&visit](const EmailAddress& address) {
    if (address.name) {
      visit(address.name->view());
    }
    visit(address.address.view());
  };
  visit(message.subject.view());
  visit(message.snippet.view());
  if (message.plainBody) {
    room.clear();
    message.plainBody->appendTo(room);
    visit(room);
  }
  if (message.htmlBody) {
    room.clear();
    message.htmlBody->appendTo(room);
    HTMLTextExtractor::blankMarkup(room);
    visit(room);
  }
  visitAddress(message.from);
  for (const auto& address : message.to) {
    visitAddress(address);
  }
  for (const auto& address : message.cc) {
    visitAddress(address);
  }
  for (const auto& label : message.labels) {
    visit(label.view());
  }
}

bool haveSameSearchableText(const EmailMessage& a, const EmailMessage& b) {
  const auto sameBody = [](const std::optional<Content>& x, const std::optional<Content>& y) {
    return x.has_value() == y.has_value() && (!x || x->source() == y->source());
  };
  return &a == &b ||
         (sameBody(a.plainBody, b.plainBody) && sameBody(a.htmlBody, b.htmlBody) && a.subject == b.subject &&
          a.snippet == b.snippet && a.from == b.from && a.to == b.to && a.cc == b.cc && a.labels == b.labels);
}

}  // namespace tidewrack
