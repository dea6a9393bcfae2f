// Who may open a session and which operation keys each role grants.
#ifndef QELSIM_ACCESS_H
#define QELSIM_ACCESS_H

#include "model.h"

#include <string>

namespace qelsim
{

// API_OK, API_ERR_NOENT (unknown user) or API_ERR_PERM (disabled).
int openSession(const Model& m, const std::string& user);

// API_AUTH_*: an unknown key gives 3 whoever asks; then an unknown or disabled
// user, or an address outside the user's list, gives 2; a role that does not
// grant the key gives 1.
int authorize(
    const Model& m, const std::string& user, const std::string& addr, const std::string& key);

// Whether the array knows the key at all.
bool knownKey(const std::string& key);

}  // namespace qelsim

#endif
