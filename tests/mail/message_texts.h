#pragma once

#include <string>

#include "mail/records.h"

namespace tidewrack {

/// A message with "<random>" in the place of what is random in it, for comparisons.
EmailMessage withoutRandomTexts(EmailMessage message);

/// The message in lines of text, for people who look at a failed test.
std::string describe(const EmailMessage& message);

}  // namespace tidewrack
