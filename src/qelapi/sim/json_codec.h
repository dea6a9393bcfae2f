// The array's JSON form: strict reading (every error names the place as a JSON
// pointer, or the line and column of a syntax error) and writing.
#ifndef QELSIM_JSON_CODEC_H
#define QELSIM_JSON_CODEC_H

#include "model.h"

#include <string>

namespace qelsim
{

struct DecodeResult
{
    bool ok = false;
    Model model;
    std::string where;  // JSON pointer ("/fcPorts/2/wwn") or "line L, column C"
    std::string what;   // the problem
    std::string message(const std::string& origin) const;  // "origin: where: what"
};

// Reads an array description. baseDir resolves relative log and audit paths
// (empty: leave them as written).
DecodeResult decodeModel(const std::string& text, const std::string& baseDir);

// Writes the model in the same form, every field present.
std::string encodeModel(const Model& m);

// 64-bit FNV-1a of a text, as 16 hexadecimal digits (identifies an array file's contents).
std::string contentHash(const std::string& text);

}  // namespace qelsim

#endif
