// Whole-file replacement that a crash cannot tear: write a temporary file in
// the same folder, fsync it, rename it over the target, fsync the folder.
#ifndef QELSIM_ATOMIC_FILE_H
#define QELSIM_ATOMIC_FILE_H

#include <sys/types.h>

#include <string>

namespace qelsim
{

// false with *error set ("path: what failed: strerror") when any step fails;
// the target then still holds its previous contents.
bool writeFileAtomically(const std::string& path, const std::string& contents, std::string* error);

// The same in two steps, for writers that must do something once the new
// contents are safely on disk and before they replace the target.
struct Replacement
{
    std::string temporary;  // "" once committed or discarded
    dev_t dev = 0;          // the temporary's identity, which the target takes on commit
    ino_t ino = 0;
};
// Writes and flushes the temporary file next to path.
bool prepareReplacement(
    const std::string& path, const std::string& contents, Replacement* r, std::string* error);
// Renames the temporary over path and flushes the folder; on failure the
// temporary is removed and path keeps its previous contents.
bool commitReplacement(Replacement* r, const std::string& path, std::string* error);
void discardReplacement(Replacement* r);

// Removes temporaries that writers of path left when they died before renaming
// them (their process no longer exists); returns how many.
int removeStaleTemporaries(const std::string& path);

// Reads a whole file; false with *error set when it cannot.
bool readWholeFile(const std::string& path, std::string* contents, std::string* error);

// Creates the folder and its missing parents (mode 0700).
bool makeDirectories(const std::string& dir, std::string* error);

std::string parentDirectory(const std::string& path);

}  // namespace qelsim

#endif
