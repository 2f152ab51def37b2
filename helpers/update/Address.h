#pragma once

#include <QUrl>

#include <optional>
#include <string>

namespace rb {

// Addresses that may be fetched: HTTPS anywhere, HTTP only from this machine itself, never with a name and password
// in them. Nothing for any other.
std::optional<QUrl> allowedAddress(const QUrl& url);
std::optional<QUrl> allowedAddress(const std::string& text);

// Where a server that was asked at `from` may send on to: to what may be fetched, and never from HTTPS back to HTTP.
std::optional<QUrl> allowedRedirect(const QUrl& from, const QUrl& to);

} // namespace rb
