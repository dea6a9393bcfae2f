#include "MofError.h"

#include "MofText.h"

PEGASUS_NAMESPACE_BEGIN

MofError::MofError(const std::string& file, Uint32 line, Uint32 column, const std::string& problem)
    : Exception(mofString(
          file + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + problem)),
      _file(file),
      _line(line),
      _column(column),
      _problem(problem)
{
}

PEGASUS_NAMESPACE_END
