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

int usage(std::ostream& out, int rc)
{
    out << "usage: qel-passwd [-f FILE] add USER [--generate]\n"
           "       qel-passwd [-f FILE] set USER [--generate]\n"
           "       qel-passwd [-f FILE] remove USER\n"
           "       qel-passwd [-f FILE] list\n"
           "The password is read from standard input (asked twice on a terminal);\n"
           "--generate creates a random one and prints it.\n"
           "FILE defaults to $QEL_PASSWORD_FILE, else "
        << kDefaultPasswordFile << ".\n";
    return rc;
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
        return usage(std::cerr, 2);
    const std::string command = argv[i++];
    if (command == "-h" || command == "--help")
        return usage(std::cout, 0);
    try
    {
        if (command == "list")
        {
            if (i != argc)
                return usage(std::cerr, 2);
            const PasswordFile file = PasswordFile::load(path, true);
            for (const PasswordEntry& e : file.entries())
                std::cout << e.user << "\n";
            return 0;
        }
        if (i >= argc)
            return usage(std::cerr, 2);
        const std::string user = argv[i++];
        bool generate = false;
        if (i < argc && std::strcmp(argv[i], "--generate") == 0 && command != "remove")
        {
            generate = true;
            ++i;
        }
        if (i != argc)
            return usage(std::cerr, 2);
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
            return usage(std::cerr, 2);
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
