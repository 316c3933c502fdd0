#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// A fresh directory under the system's temporary directory, removed with its contents at the end of
// the scope. Its name carries the process id and the running test's name, so parallel runs don't meet.
class TempDirectory {
public:
  TempDirectory() {
    ::testing::TestInfo const* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = "tandem-" + std::to_string(::getpid());
    if (test != nullptr) {
      name += std::string("-") + test->test_suite_name() + "-" + test->name();
    }
    path_ = std::filesystem::temp_directory_path() / name;
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ~TempDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempDirectory(TempDirectory const&) = delete;
  TempDirectory& operator=(TempDirectory const&) = delete;

  std::filesystem::path const& path() const { return path_; }
  std::string file(std::string const& name) const { return (path_ / name).string(); }

  std::string write(std::string const& name, std::vector<unsigned char> const& bytes) const {
    std::string const fullPath = file(name);
    std::ofstream out(fullPath, std::ios::binary);
    out.write(reinterpret_cast<char const*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return fullPath;
  }

  std::vector<unsigned char> read(std::string const& name) const {
    std::ifstream in(file(name), std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

private:
  std::filesystem::path path_;
};
