// A certificate authority made up for a test, in a folder of its own: it issues server and
// client certificates (valid, expired, for chosen names) as PEM files, with the OpenSSL
// API.
#ifndef QEL_TESTS_WIRE_TESTPKI_H
#define QEL_TESTS_WIRE_TESTPKI_H

#include <memory>
#include <string>
#include <vector>

namespace wiretest
{

struct IssuedCertificate
{
    std::string certificateFile;
    std::string keyFile;
    std::string fingerprint;  // SHA-256, as the server names certificates
};

class TestPki
{
public:
    // The authority's certificate and key go to `dir` (which must exist) as
    // <name>-ca.pem and <name>-ca-key.pem.
    TestPki(const std::string& dir, const std::string& name);
    ~TestPki();

    const std::string& caFile() const { return _caFile; }

    // A certificate for `commonName`, valid from `fromDays` to `toDays` days from now
    // (negative: in the past), for a server (with `names` as its DNS names and IP
    // addresses) or a client.
    IssuedCertificate issue(
        const std::string& commonName, bool server, std::vector<std::string> names = {},
        int fromDays = -1, int toDays = 30);

private:
    struct Keys;
    std::string _dir;
    std::string _caFile;
    std::unique_ptr<Keys> _keys;
};

}  // namespace wiretest

#endif
