#include "accounts/RandomCredentials.h"

#include <filesystem>
#include <random>
#include <stdexcept>
#include <vector>

#include "accounts/CredentialsFile.h"

Credentials LoadRandomCredentials(std::string const& directory) {
  std::vector<std::filesystem::path> files;
  for (std::filesystem::directory_entry const& entry : std::filesystem::directory_iterator(directory)) {
    if (entry.is_regular_file()) {
      files.push_back(entry.path());
    }
  }
  if (files.empty()) {
    throw std::runtime_error("No files found in directory");
  }
  std::random_device device("/dev/urandom");
  std::mt19937 generator(device());
  std::uniform_int_distribution<std::size_t> pick(0, files.size() - 1);
  return LoadCredentials(files[pick(generator)].string());
}
