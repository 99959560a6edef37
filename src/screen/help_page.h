#pragma once

namespace tidewrack {

/// The page on which the mail provider tells how to export an account.
inline constexpr const char* exportHelpURL = "https://support.google.com/accounts/answer/3024190";

}  // namespace tidewrack
