#include "ServerUnderLoad.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

ServerUnderLoad::ServerUnderLoad(std::string const& program, std::string const& dataDirectory,
                                 std::string const& logFile) {
  int const log = ::open(logFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (log < 0) {
    error_ = "Can't write the server's log " + logFile;
    return;
  }
  pid_ = fork();
  if (pid_ == 0) {
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    std::vector<std::string> arguments = {program,         "--base-port", "0", "--bind", "127.0.0.1",
                                          "--no-website", "--data",      dataDirectory};
    std::vector<char*> argv;
    for (auto& argument : arguments) {
      argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  ::close(log);
  if (pid_ < 0) {
    error_ = "Can't start the server";
    return;
  }
  std::string const marker = "Lobby listening on 127.0.0.1 port ";
  auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (std::chrono::steady_clock::now() < deadline) {
    std::ifstream in(logFile);
    std::string line;
    while (std::getline(in, line)) {
      if (line.rfind(marker, 0) == 0) {
        int const port = std::atoi(line.c_str() + marker.size());
        if (port > 0 && port < 65536) {
          port_ = static_cast<unsigned short>(port);
          return;
        }
      }
    }
    if (!alive()) {
      error_ = "The server exited at start; see " + logFile;
      return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  error_ = "The server didn't announce its port within ten seconds; see " + logFile;
}

ServerUnderLoad::~ServerUnderLoad() {
  stop();
}

bool ServerUnderLoad::alive() {
  if (pid_ <= 0 || exited_) {
    return false;
  }
  if (waitpid(pid_, &status_, WNOHANG) == pid_) {
    exited_ = true;
    return false;
  }
  return true;
}

int ServerUnderLoad::stop() {
  if (pid_ <= 0) {
    return -1;
  }
  if (!alive()) {
    pid_ = -1;
    return -1;
  }
  kill(pid_, SIGTERM);
  auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (std::chrono::steady_clock::now() < deadline) {
    if (waitpid(pid_, &status_, WNOHANG) == pid_) {
      pid_ = -1;
      exited_ = true;
      return WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  kill(pid_, SIGKILL);
  waitpid(pid_, &status_, 0);
  pid_ = -1;
  exited_ = true;
  return -1;
}

std::optional<std::uint64_t> ParseProcessCpuTicks(std::string const& statText) {
  auto const close = statText.rfind(')');
  if (close == std::string::npos) {
    return std::nullopt;
  }
  // After the name: field 3 (state) onwards; utime and stime are fields 14 and 15.
  std::istringstream fields(statText.substr(close + 1));
  std::string field;
  std::uint64_t utime = 0;
  std::uint64_t stime = 0;
  for (int number = 3; number <= 15; ++number) {
    if (!(fields >> field)) {
      return std::nullopt;
    }
    if (number == 14 || number == 15) {
      try {
        std::size_t used = 0;
        std::uint64_t const value = std::stoull(field, &used);
        if (used != field.size()) {
          return std::nullopt;
        }
        (number == 14 ? utime : stime) = value;
      } catch (std::exception const&) {
        return std::nullopt;
      }
    }
  }
  return utime + stime;
}

std::optional<std::uint64_t> ProcessCpuTicks(pid_t pid) {
  std::ifstream in("/proc/" + std::to_string(pid) + "/stat");
  std::stringstream text;
  text << in.rdbuf();
  if (!in) {
    return std::nullopt;
  }
  return ParseProcessCpuTicks(text.str());
}

std::optional<MachineTicks> ReadMachineTicks() {
  std::ifstream in("/proc/stat");
  std::string label;
  if (!(in >> label) || label != "cpu") {
    return std::nullopt;
  }
  MachineTicks ticks;
  std::uint64_t value = 0;
  // user nice system idle iowait irq softirq steal ...: idle and iowait are the idle ones.
  for (int field = 0; field < 8 && in >> value; ++field) {
    ticks.total += value;
    if (field != 3 && field != 4) {
      ticks.busy += value;
    }
  }
  return ticks;
}
