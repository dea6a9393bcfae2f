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

const char* const kSynopsis[] = {
    "qel-certmap [-f FILE] add USER CERT.pem",
    "qel-certmap [-f FILE] add USER --fingerprint SHA256",
    "qel-certmap [-f FILE] remove USER",
    "qel-certmap [-f FILE] remove --certificate CERT.pem",
    "qel-certmap [-f FILE] remove --fingerprint SHA256",
    "qel-certmap [-f FILE] list",
    "qel-certmap fingerprint CERT.pem",
};

// A usage error prints the synopsis; --help prints the whole text.
int usage()
{
    const char* lead = "usage: ";
    for (const char* line : kSynopsis)
    {
        std::cerr << lead << line << "\n";
        lead = "       ";
    }
    std::cerr << "(qel-certmap --help for more)\n";
    return 2;
}

int help()
{
    std::cout << "NAME\n"
                 "  qel-certmap - map client certificates to users of the CIM server\n"
                 "\n"
                 "SYNOPSIS\n";
    for (const char* line : kSynopsis)
        std::cout << "  " << line << "\n";
    std::cout
        << "  qel-certmap --help\n"
           "\n"
           "DESCRIPTION\n"
           "  A client that presents a certificate over HTTPS, verified against the server's\n"
           "  trust store (qel-cimserver --tls-trust), logs in as the user this map names for\n"
           "  it, without a password; a verified certificate the map does not name is refused\n"
           "  with 401. Certificates are named by their SHA-256 fingerprint, read from a PEM\n"
           "  file or given as 64 hex digits (':' between bytes allowed, as `openssl x509\n"
           "  -noout -fingerprint -sha256` prints it). The file is replaced atomically and keeps\n"
           "  its owner and mode; a running server reads it again when it changes.\n"
           "\n"
           "COMMANDS\n"
           "  add USER CERT.pem              map the certificate in CERT.pem to USER\n"
           "  add USER --fingerprint SHA256  the same, from the fingerprint\n"
           "  remove USER                    remove every certificate of USER\n"
           "  remove --certificate CERT.pem  remove that certificate\n"
           "  remove --fingerprint SHA256    remove the certificate with that fingerprint\n"
           "  list                           the map: user, fingerprint, note\n"
           "  fingerprint CERT.pem           print the certificate's fingerprint and subject\n"
           "\n"
           "OPTIONS\n"
           "  -f FILE     the map (default $QEL_CERTIFICATE_MAP, else "
        << kDefaultCertificateMap
        << ")\n"
           "  -h, --help  this text\n"
           "\n"
           "EXIT STATUS\n"
           "  0  done\n"
           "  1  no such user or certificate, a certificate mapped already, an invalid user\n"
           "     name, an unreadable certificate, or the map could not be read or written\n"
           "  2  wrong command line\n"
           "\n"
           "SEE ALSO\n"
           "  qel-cimserver --help, qel-passwd --help\n";
    return 0;
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
        return usage();
    const std::string command = args[0];
    if (command == "-h" || command == "--help")
        return help();
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
                return usage();
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
        return usage();
    }
    catch (const std::exception& e)
    {
        return fail(e.what());
    }
}
