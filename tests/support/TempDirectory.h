#pragma once

#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

// A fresh directory under the system's temporary directory, removed with everything in it at the end.
class TempDirectory {
public:
  TempDirectory() {
    static std::atomic<int> counter{0};
    path_ = std::filesystem::temp_directory_path() /
            ("tandem-test-" + std::to_string(getpid()) + "-" + std::to_string(counter++));
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ~TempDirectory() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  TempDirectory(TempDirectory const&) = delete;
  TempDirectory& operator=(TempDirectory const&) = delete;

  std::filesystem::path const& path() const { return path_; }
  std::string str() const { return path_.string(); }
  std::string file(std::string const& name) const { return (path_ / name).string(); }

  void write(std::string const& relative, std::string const& content) const {
    std::filesystem::create_directories((path_ / relative).parent_path());
    std::ofstream(path_ / relative, std::ios::binary) << content;
  }
  std::string read(std::string const& relative) const {
    std::ifstream in(path_ / relative, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
  }
  // Binary contents, written and read as bytes; writeBytes returns the file's full path.
  std::string writeBytes(std::string const& name, std::vector<unsigned char> const& bytes) const {
    write(name, std::string(bytes.begin(), bytes.end()));
    return file(name);
  }
  std::vector<unsigned char> readBytes(std::string const& name) const {
    std::string const text = read(name);
    return {text.begin(), text.end()};
  }
  bool exists(std::string const& relative) const { return std::filesystem::exists(path_ / relative); }

private:
  std::filesystem::path path_;
};
