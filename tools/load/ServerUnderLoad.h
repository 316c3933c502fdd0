#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>

// The tandem-server being measured, as a child process on 127.0.0.1 with its output in a log file.
class ServerUnderLoad {
public:
  // Starts the server on a data directory with any free port and waits up to ten seconds for its
  // lobby port. ok() tells whether that worked; error() why not.
  ServerUnderLoad(std::string const& program, std::string const& dataDirectory, std::string const& logFile);
  ~ServerUnderLoad();
  ServerUnderLoad(ServerUnderLoad const&) = delete;
  ServerUnderLoad& operator=(ServerUnderLoad const&) = delete;

  bool ok() const { return port_ != 0; }
  std::string const& error() const { return error_; }
  unsigned short port() const { return port_; }
  pid_t pid() const { return pid_; }
  // False once the process has exited on its own (a crash, under load).
  bool alive();
  // SIGTERM and the exit status; -1 if it had to be killed or had already died.
  int stop();

private:
  pid_t pid_ = -1;
  bool exited_ = false;
  int status_ = 0;
  unsigned short port_ = 0;
  std::string error_;
};

// CPU time of a process in clock ticks: user plus system, fields 14 and 15 of /proc/PID/stat.
std::optional<std::uint64_t> ProcessCpuTicks(pid_t pid);
// The same read from the text of a stat file. The command name may hold spaces and parentheses;
// the fields count from after its last closing parenthesis.
std::optional<std::uint64_t> ParseProcessCpuTicks(std::string const& statText);

// All processors' ticks from /proc/stat: busy and total, for how busy the machine was.
struct MachineTicks {
  std::uint64_t busy = 0;
  std::uint64_t total = 0;
};
std::optional<MachineTicks> ReadMachineTicks();
