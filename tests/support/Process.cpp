#include "support/Process.h"

#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace daywyn::test {

namespace {

void drain(int fd, std::string& into) {
    char buffer[4096];
    const ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n > 0) {
        into.append(buffer, static_cast<std::size_t>(n));
    }
}

} // namespace

ProcessResult runProcess(const std::vector<std::string>& argv,
                         const std::map<std::string, std::string>& environment) {
    int outPipe[2];
    int errPipe[2];
    if (::pipe(outPipe) != 0 || ::pipe(errPipe) != 0) {
        throw std::runtime_error("pipe failed");
    }
    std::vector<std::string> envStrings;
    for (char** e = environ; *e; ++e) {
        const std::string entry(*e);
        const auto name = entry.substr(0, entry.find('='));
        if (environment.find(name) == environment.end()) {
            envStrings.push_back(entry);
        }
    }
    for (const auto& [name, value] : environment) {
        if (!value.empty()) {
            envStrings.push_back(name + "=" + value);
        }
    }
    std::vector<char*> envp;
    for (auto& s : envStrings) {
        envp.push_back(s.data());
    }
    envp.push_back(nullptr);
    std::vector<std::string> args = argv;
    std::vector<char*> argp;
    for (auto& a : args) {
        argp.push_back(a.data());
    }
    argp.push_back(nullptr);

    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(outPipe[1], STDOUT_FILENO);
        ::dup2(errPipe[1], STDERR_FILENO);
        ::close(outPipe[0]);
        ::close(errPipe[0]);
        ::execve(argp[0], argp.data(), envp.data());
        ::_exit(127);
    }
    ::close(outPipe[1]);
    ::close(errPipe[1]);
    ProcessResult result;
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    int open = 2;
    while (open > 0) {
        if (::poll(fds, 2, -1) < 0) {
            break;
        }
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd >= 0 && (fds[i].revents & (POLLIN | POLLHUP))) {
                std::string& into = i == 0 ? result.out : result.err;
                const std::size_t before = into.size();
                drain(fds[i].fd, into);
                if (into.size() == before) {
                    ::close(fds[i].fd);
                    fds[i].fd = -1;
                    --open;
                }
            }
        }
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

std::string makeTempFolder() {
    const char* base = std::getenv("XDG_DATA_HOME");
    std::string pattern = std::string(base ? base : "/tmp") + "/case.XXXXXX";
    if (!::mkdtemp(pattern.data())) {
        throw std::runtime_error("mkdtemp failed");
    }
    return pattern;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
}

} // namespace daywyn::test
