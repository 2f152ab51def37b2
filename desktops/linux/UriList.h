#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace rb {

// Paths of the local files in a list of URIs, one a line (text/uri-list, or what file managers add to it: a first
// line with a verb). Other URIs, remarks and malformed lines are left out.
std::vector<std::string> localFilesOf(std::string_view uriList);
// file:// URI of an absolute path; bytes beyond plain letters are percent-encoded.
std::string fileUri(std::string_view path);

} // namespace rb
