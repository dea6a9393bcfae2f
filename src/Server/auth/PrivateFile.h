// Reading and replacing the small files that hold who may log in (password file,
// certificate map): whole-file reads, and writes that readers never see half done.
#ifndef QEL_SERVER_AUTH_PRIVATEFILE_H
#define QEL_SERVER_AUTH_PRIVATEFILE_H

#include <string>

namespace qel
{
namespace auth
{

// The whole file in `text`. False, with errno-based `error`, when it cannot be read;
// `missing` tells a file that does not exist from one that cannot be read.
bool readWholeFile(const std::string& path, std::string& text, std::string& error, bool& missing);

// Writes `text` to a temporary file beside `path`, readable by the owner only, syncs it
// and renames it over `path`. False, with `error` naming the file and the reason.
bool replaceFile(const std::string& path, const std::string& text, std::string& error);

}  // namespace auth
}  // namespace qel

#endif
