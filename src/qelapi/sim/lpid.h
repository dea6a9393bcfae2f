// Port positions and LPIDs. An LPID packs a position as
// (node + 1) << 10 | slot << 5 | port, so it is stable per port, never 0 and
// never API_LPID_UNKNOWN. Its text form is the position "node:slot:port".
#ifndef QELSIM_LPID_H
#define QELSIM_LPID_H

#include "model.h"

#include <optional>
#include <string>

namespace qelsim
{

constexpr unsigned kMaxNode = 59;
constexpr unsigned kMaxSlot = 31;
constexpr unsigned kMaxPort = 31;

uint16_t lpidOf(const Position& p);
std::optional<Position> positionOfLpid(uint16_t lpid);
std::string positionText(const Position& p);
// The same into out (at least 12 bytes: "59:31:31" and its terminator fit), no allocation.
void formatPosition(const Position& p, char* out, size_t size);
// Accepts only the canonical text: three decimal numbers without leading
// zeros, within the limits above.
std::optional<Position> parsePosition(const std::string& text);

}  // namespace qelsim

#endif
