// qel-passwd: manages the CIM server's users (add, remove, set password, list).
// Passwords are read from standard input, never from the command line, so they do not
// show in process listings; --generate makes one up and prints it.
#include "BasicAuthenticator.h"
#include "PasswordFile.h"
#include "PasswordHash.h"

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <termios.h>
#include <unistd.h>

using namespace qel::auth;

namespace
{

const char* const kSynopsis[] = {
    "qel-passwd [-f FILE] add USER [--generate]",
    "qel-passwd [-f FILE] set USER [--generate]",
    "qel-passwd [-f FILE] remove USER",
    "qel-passwd [-f FILE] list",
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
    std::cerr << "(qel-passwd --help for more)\n";
    return 2;
}

int help()
{
    std::cout << "NAME\n"
                 "  qel-passwd - manage the users of the CIM server\n"
                 "\n"
                 "SYNOPSIS\n";
    for (const char* line : kSynopsis)
        std::cout << "  " << line << "\n";
    std::cout
        << "  qel-passwd --help\n"
           "\n"
           "DESCRIPTION\n"
           "  Adds and removes the users that log in to qel-cimserver with HTTP Basic, sets\n"
           "  their passwords and lists them. The file holds one \"user:hash\" line per user,\n"
           "  the hash a salted one-way libcrypt hash (yescrypt where available, else\n"
           "  SHA-512); no password is ever stored. Passwords are read from standard input,\n"
           "  never from the command line, so they do not show in process listings: asked\n"
           "  twice without echo on a terminal, else read as one line. The file is replaced\n"
           "  atomically (a new file is readable by its owner only). A running server reads\n"
           "  it again on SIGHUP (systemctl reload qel-cimserver).\n"
           "\n"
           "COMMANDS\n"
           "  add USER       a new user; fails if USER exists (the file is created if needed)\n"
           "  set USER       a new password for an existing user\n"
           "  remove USER    remove the user\n"
           "  list           the users, one per line\n"
           "  User names are letters, digits, '.', '_' and '-', at most 64.\n"
           "\n"
           "OPTIONS\n"
           "  -f FILE        the password file (default $QEL_PASSWORD_FILE, else "
        << kDefaultPasswordFile
        << ")\n"
           "  --generate     make up a random password and print it\n"
           "  -h, --help     this text\n"
           "\n"
           "EXIT STATUS\n"
           "  0  done\n"
           "  1  no such user, user exists, invalid user name, or the file could not be\n"
           "     read or written\n"
           "  2  wrong command line\n"
           "\n"
           "SEE ALSO\n"
           "  qel-cimserver --help\n";
    return 0;
}

std::string readLine(const char* prompt, bool terminal)
{
    if (terminal)
        std::cerr << prompt << std::flush;
    termios saved{};
    if (terminal)
    {
        tcgetattr(STDIN_FILENO, &saved);
        termios quiet = saved;
        quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
    }
    std::string line;
    const bool got = static_cast<bool>(std::getline(std::cin, line));
    if (terminal)
    {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
        std::cerr << "\n";
    }
    if (!got)
        throw std::runtime_error("no password given on standard input");
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return line;
}

std::string askPassword()
{
    const bool terminal = isatty(STDIN_FILENO);
    const std::string first = readLine("New password: ", terminal);
    if (terminal && readLine("Repeat password: ", terminal) != first)
        throw std::runtime_error("passwords differ");
    if (first.empty())
        throw std::runtime_error("empty passwords are not allowed");
    return first;
}

}  // namespace

int main(int argc, char** argv)
{
    std::string path =
        std::getenv("QEL_PASSWORD_FILE") ? std::getenv("QEL_PASSWORD_FILE") : kDefaultPasswordFile;
    int i = 1;
    if (i + 1 < argc && std::strcmp(argv[i], "-f") == 0)
    {
        path = argv[i + 1];
        i += 2;
    }
    if (i >= argc)
        return usage();
    const std::string command = argv[i++];
    if (command == "-h" || command == "--help")
        return help();
    try
    {
        if (command == "list")
        {
            if (i != argc)
                return usage();
            const PasswordFile file = PasswordFile::load(path, true);
            for (const PasswordEntry& e : file.entries())
                std::cout << e.user << "\n";
            return 0;
        }
        if (i >= argc)
            return usage();
        const std::string user = argv[i++];
        bool generate = false;
        if (i < argc && std::strcmp(argv[i], "--generate") == 0 && command != "remove")
        {
            generate = true;
            ++i;
        }
        if (i != argc)
            return usage();
        if (!PasswordFile::validUserName(user))
        {
            std::cerr << "qel-passwd: invalid user name \"" << user
                      << "\" (letters, digits, '.', '_' and '-', at most 64)\n";
            return 1;
        }
        PasswordFile file = PasswordFile::load(path, command == "add");
        if (command == "remove")
        {
            if (!file.remove(user))
            {
                std::cerr << "qel-passwd: no user \"" << user << "\" in " << path << "\n";
                return 1;
            }
        }
        else if (command == "add" || command == "set")
        {
            if (command == "add" && file.find(user))
            {
                std::cerr << "qel-passwd: user \"" << user << "\" already exists in " << path
                          << "\n";
                return 1;
            }
            if (command == "set" && !file.find(user))
            {
                std::cerr << "qel-passwd: no user \"" << user << "\" in " << path << "\n";
                return 1;
            }
            const std::string password = generate ? generatePassword() : askPassword();
            const std::string hash = hashPassword(password);
            if (command == "add")
                file.add(user, hash);
            else
                file.set(user, hash);
            if (generate)
                std::cout << password << "\n";
        }
        else
        {
            return usage();
        }
        file.save(path);
        return 0;
    }
    catch (const std::exception& e)
    {
        std::cerr << "qel-passwd: " << e.what() << "\n";
        return 1;
    }
}
