// qel-certmap: manages which CIM user a client certificate logs in as over HTTPS (add,
// remove, list). Certificates are named by their SHA-256 fingerprint, taken from a PEM
// file or given as text; the certificate must also be trusted by the server's trust store
// (qel-cimserver --tls-trust) to be accepted at all.
#include "CertificateIdentity.h"
#include "CertificateMap.h"
#include "PasswordFile.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

using namespace qel::auth;

namespace
{

int usage(std::ostream& out, int rc)
{
    out << "usage: qel-certmap [-f FILE] add USER CERT.pem\n"
           "       qel-certmap [-f FILE] add USER --fingerprint SHA256\n"
           "       qel-certmap [-f FILE] remove USER\n"
           "       qel-certmap [-f FILE] remove --certificate CERT.pem\n"
           "       qel-certmap [-f FILE] remove --fingerprint SHA256\n"
           "       qel-certmap [-f FILE] list\n"
           "       qel-certmap fingerprint CERT.pem\n"
           "A fingerprint is the SHA-256 of the certificate: 64 hex digits, ':' between\n"
           "bytes allowed (as `openssl x509 -noout -fingerprint -sha256` prints it).\n"
           "FILE defaults to $QEL_CERTIFICATE_MAP, else "
        << kDefaultCertificateMap << ".\n";
    return rc;
}

int fail(const std::string& message)
{
    std::cerr << "qel-certmap: " << message << "\n";
    return 1;
}

// The certificate named by args[at...]: "--fingerprint HEX", "--certificate FILE" or "FILE".
// False when the arguments do not name one that way.
bool certificateArgument(
    const std::vector<std::string>& args, size_t at, std::string& fingerprint, std::string& note)
{
    const bool flagged = args[at] == "--fingerprint" || args[at] == "--certificate";
    if (args.size() != at + (flagged ? 2 : 1))
        return false;
    if (args[at] == "--fingerprint")
    {
        fingerprint = canonicalFingerprint(args[at + 1]);
        if (fingerprint.empty())
            throw std::runtime_error(
                "\"" + args[at + 1] + "\" is not a SHA-256 fingerprint (64 hex digits)");
        return true;
    }
    const CertificateIdentity id = readCertificateFile(args[flagged ? at + 1 : at]);
    fingerprint = id.fingerprint;
    note = id.subject;
    return true;
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    const char* env = std::getenv("QEL_CERTIFICATE_MAP");
    std::string path = env && *env ? env : kDefaultCertificateMap;
    if (args.size() >= 2 && args[0] == "-f")
    {
        path = args[1];
        args.erase(args.begin(), args.begin() + 2);
    }
    if (args.empty())
        return usage(std::cerr, 2);
    const std::string command = args[0];
    if (command == "-h" || command == "--help")
        return usage(std::cout, 0);
    try
    {
        if (command == "fingerprint" && args.size() == 2)
        {
            const CertificateIdentity id = readCertificateFile(args[1]);
            std::cout << id.fingerprint << "  " << id.subject << "\n";
            return 0;
        }
        if (command == "list" && args.size() == 1)
        {
            const CertificateMap map = CertificateMap::load(path, true);
            for (const CertificateMapping& m : map.entries())
                std::cout << m.user << " " << m.fingerprint << (m.note.empty() ? "" : " ") << m.note
                          << "\n";
            return 0;
        }
        std::string fingerprint, note;
        if (command == "add" && args.size() >= 3)
        {
            const std::string& user = args[1];
            if (!certificateArgument(args, 2, fingerprint, note))
                return usage(std::cerr, 2);
            if (!PasswordFile::validUserName(user))
                return fail(
                    "invalid user name \"" + user +
                    "\" (letters, digits, '.', '_' and '-', at most 64)");
            CertificateMap map = CertificateMap::load(path, true);
            if (const CertificateMapping* other = map.find(fingerprint))
                return fail(
                    "the certificate is already mapped to \"" + other->user + "\" in " + path);
            map.add(user, fingerprint, note);
            map.save(path);
            std::cout << user << " " << fingerprint << "\n";
            return 0;
        }
        if (command == "remove" && args.size() == 2 && args[1][0] != '-')
        {
            CertificateMap map = CertificateMap::load(path, false);
            if (map.removeUser(args[1]) == 0)
                return fail("no certificate of \"" + args[1] + "\" in " + path);
            map.save(path);
            return 0;
        }
        if (command == "remove" && args.size() == 3 && args[1][0] == '-' &&
            certificateArgument(args, 1, fingerprint, note))
        {
            CertificateMap map = CertificateMap::load(path, false);
            if (!map.removeFingerprint(fingerprint))
                return fail("certificate " + fingerprint + " is not in " + path);
            map.save(path);
            return 0;
        }
        return usage(std::cerr, 2);
    }
    catch (const std::exception& e)
    {
        return fail(e.what());
    }
}
