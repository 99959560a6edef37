#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "mail/records.h"

/// JSON coding of the mail records. Keys are the field names; `name`, `contentID`, `date`, `plainBody`,
/// `htmlBody`, `inReplyTo` and `category` are left out when absent and may be missing when read; every
/// other key is required. Reading throws CodingFailure.
namespace tidewrack {

/// How an attachment's `data` is written: in full as Base64 (RFC 4648, section 4), or as the two keys
/// `size` (bytes) and `sha256` (64 lower-case hexadecimal digits) in its place.
enum class AttachmentDataForm { base64, digest };

/// Dates are written in ISO 8601 in UTC. Keys come sorted.
nlohmann::json toJSON(const EmailAddress& address);
nlohmann::json toJSON(const EmailAttachment& attachment,
                      AttachmentDataForm form = AttachmentDataForm::base64);
nlohmann::json toJSON(const EmailMessage& message, AttachmentDataForm form = AttachmentDataForm::base64);

EmailAddress emailAddressFromJSON(const nlohmann::json& json);
EmailAttachment emailAttachmentFromJSON(const nlohmann::json& json);
EmailMessage emailMessageFromJSON(const nlohmann::json& json);

/// The lists that the store keeps as JSON bytes. Writing is compact; reading takes any JSON of that shape
/// and is fast on what was written here.
std::string encodeAddresses(const std::vector<EmailAddress>& addresses);
std::string encodeStrings(const std::vector<Text>& strings);
std::vector<EmailAddress> decodeAddresses(std::string_view json);
std::vector<Text> decodeStrings(std::string_view json);

}  // namespace tidewrack
