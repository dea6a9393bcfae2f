// The one error the MOF compiler reports: where (file, line, column) and
// what went wrong. getMessage() reads "file:line:column: problem".
#ifndef QEL_Server_MofError_h
#define QEL_Server_MofError_h

#include <string>
#include <Pegasus/Common/Config.h>
#include <Pegasus/Common/Exception.h>

PEGASUS_NAMESPACE_BEGIN

class MofError : public Exception
{
public:
    MofError(const std::string& file, Uint32 line, Uint32 column, const std::string& problem);

    const std::string& file() const { return _file; }
    Uint32 line() const { return _line; }
    Uint32 column() const { return _column; }
    // The message without the position prefix.
    const std::string& problem() const { return _problem; }

private:
    std::string _file;
    Uint32 _line;
    Uint32 _column;
    std::string _problem;
};

PEGASUS_NAMESPACE_END

#endif
