#include "app/batch_command.h"

#include <poll.h>
#include <unistd.h>

#include <QGuiApplication>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <sstream>

#include "app/child_process.h"

namespace dxfimport {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr char kEnd = '\x1e';  // starts the line that ends a file's output

struct Outcome {
  std::string file, picture, status, notes;
  double seconds = 0;
};

// The picture of every file in the folder: its name with the format's extension, a
// number added when two files share a name.
std::vector<std::string> PictureNames(const std::vector<std::string>& files, const fs::path& folder,
                                      const std::string& format) {
  std::vector<std::string> names;
  std::map<std::string, int> seen;
  for (const std::string& file : files) {
    std::string stem = fs::path(file).stem().string();
    if (const int n = ++seen[stem]; n > 1) stem += "-" + std::to_string(n);
    names.push_back((folder / (stem + "." + format)).string());
  }
  return names;
}

// The child's standard error as one line: its messages without the program's prefix.
std::string Notes(const std::string& errors) {
  std::istringstream in(errors);
  std::string line, notes;
  while (std::getline(in, line)) {
    for (const char* prefix : {"dxfimport render: ", "dxfimport: "}) {
      if (line.rfind(prefix, 0) == 0) line.erase(0, std::char_traits<char>::length(prefix));
    }
    if (line.empty()) continue;
    notes += (notes.empty() ? "" : "; ") + line;
  }
  std::replace(notes.begin(), notes.end(), '|', '/');
  return notes;
}

std::string StatusOf(int exitStatus, const std::string& picture) {
  if (exitStatus == 0) return "ok";
  std::error_code ec;
  return exitStatus == 1 && fs::exists(picture, ec) ? "incomplete" : "failed";
}

// What a worker ended while it wrote `picture` leaves behind: the temporary file that
// would have been renamed into place ("<picture>.XXXXXX").
void RemoveLeftovers(const std::string& picture) {
  const fs::path path(picture);
  const std::string prefix = path.filename().string() + ".";
  std::error_code ec;
  for (const fs::directory_entry& entry : fs::directory_iterator(path.parent_path(), ec)) {
    const std::string name = entry.path().filename().string();
    if (name.size() == prefix.size() + 6 && name.rfind(prefix, 0) == 0) fs::remove(entry.path(), ec);
  }
}

// A worker process: a GUI application of its own, then every file the parent sends it (an
// index), each ended on its output by a line "\x1e<exit status> <seconds>" after what
// the render said on standard error.
int Worker(const RenderOptions& options, const std::vector<std::string>& files,
           const std::vector<std::string>& pictures, int out, int in) {
  int argc = 1;
  char name[] = "dxfimport";
  char* argv[] = {name, nullptr};
  QGuiApplication app(argc, argv);
  uint32_t index = 0;
  while (read(in, &index, sizeof index) == ssize_t(sizeof index) && index < files.size()) {
    RenderOptions one = options;
    one.file = files[index], one.output = pictures[index];
    const auto start = Clock::now();
    const int status = RunRender(one);
    std::fflush(stderr);
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    if (dprintf(out, "%c%d %.3f\n", kEnd, status, seconds) < 0) return 1;
  }
  return 0;
}

void PrintTable(const std::vector<Outcome>& outcomes, double seconds) {
  std::ostringstream table;
  table << "| file | status | seconds | left out or reported |\n|---|---|---|---|\n";
  std::map<std::string, int> counts;
  for (const Outcome& o : outcomes) {
    char time[32];
    std::snprintf(time, sizeof time, "%.2f", o.seconds);
    table << "| " << o.file << " | " << o.status << " | " << time << " | " << o.notes << " |\n";
    ++counts[o.status];
  }
  table << "\n" << outcomes.size() << " files in " << std::fixed;
  table.precision(1);
  table << seconds << " s:";
  for (const auto& [status, count] : counts) table << " " << count << " " << status;
  std::cout << table.str() << std::endl;
}

}  // namespace

std::vector<std::string> DxfFilesUnder(const std::string& dir) {
  std::vector<std::string> files;
  std::error_code ec;
  for (auto it = fs::recursive_directory_iterator(dir, ec); !ec && it != fs::recursive_directory_iterator();
       it.increment(ec)) {
    std::string ext = it->path().extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    if (it->is_regular_file() && ext == ".dxf") files.push_back(it->path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<std::string> ExpandInputs(const std::vector<std::string>& inputs) {
  std::vector<std::string> files;
  for (const std::string& input : inputs) {
    std::error_code ec;
    if (!fs::is_directory(input, ec)) {
      files.push_back(input);
      continue;
    }
    const std::vector<std::string> under = DxfFilesUnder(input);
    files.insert(files.end(), under.begin(), under.end());
  }
  return files;
}

int RunRenderBatch(const RenderOptions& options, const std::vector<std::string>& files,
                   const std::string& format, int jobs, double fileSeconds) {
  if (files.empty()) {
    std::fprintf(stderr, "dxfimport render: no .dxf files to draw\n");
    return 2;
  }
  std::error_code ec;
  fs::create_directories(options.output, ec);
  if (!fs::is_directory(options.output, ec)) {
    std::fprintf(stderr, "dxfimport render: %s is not a folder\n", options.output.c_str());
    return 2;
  }
  const std::vector<std::string> pictures = PictureNames(files, options.output, format);
  std::signal(SIGPIPE, SIG_IGN);  // a worker that died is seen on its output instead
  struct Busy {
    ChildProcess child;
    std::size_t index = 0;  // the file it draws
    bool idle = true;
    Clock::time_point since{};
  };
  std::vector<Busy> workers;
  std::vector<Outcome> outcomes(files.size());
  const auto begin = Clock::now();
  std::size_t next = 0, done = 0;
  auto record = [&](std::size_t index, const std::string& status, double seconds, std::string notes) {
    Outcome& o = outcomes[index];
    o.file = files[index], o.picture = pictures[index], o.status = status, o.seconds = seconds;
    o.notes = std::move(notes);
    std::fprintf(stderr, "[%zu/%zu] %-10s %6.2f s  %s\n", ++done, files.size(), status.c_str(), seconds,
                 o.file.c_str());
  };
  // Hands an idle worker the next file, or lets it go when none is left.
  auto feed = [&](Busy& w) {
    const uint32_t index = uint32_t(next);
    if (next < files.size() && w.child.Send(&index, sizeof index)) {
      w.index = next++, w.idle = false, w.since = Clock::now();
    } else {
      w.child.CloseInput();
    }
  };
  jobs = std::max(1, std::min(jobs, int(files.size())));
  while (done < files.size()) {
    while (int(workers.size()) < jobs && next < files.size()) {
      workers.push_back({ChildProcess(
          [&](int out, int in) { return Worker(options, files, pictures, out, in); }, 0, true)});
      if (!workers.back().child.Started()) {
        workers.pop_back();
        record(next++, "failed", 0, "no worker process could be started");
        continue;
      }
      feed(workers.back());
    }
    // A worker past the time limit of its file is ended; its file is a row of its own and
    // a new worker takes the files that are left.
    int wait = -1;
    for (std::size_t i = workers.size(); fileSeconds > 0 && i-- > 0;) {
      if (workers[i].idle) continue;
      const double left =
          fileSeconds - std::chrono::duration<double>(Clock::now() - workers[i].since).count();
      if (left > 0) {
        const int ms = int(std::min(left * 1000.0, 3.6e6)) + 1;
        wait = wait < 0 ? ms : std::min(wait, ms);
        continue;
      }
      workers[i].child.Kill();
      RemoveLeftovers(pictures[workers[i].index]);
      char limit[64];
      std::snprintf(limit, sizeof limit, "ended after %g s (--file-timeout)", fileSeconds);
      const std::string said = Notes(workers[i].child.Output());
      record(workers[i].index, "timed out", fileSeconds, said + (said.empty() ? "" : "; ") + limit);
      workers.erase(workers.begin() + std::ptrdiff_t(i));
    }
    if (workers.empty()) continue;
    std::vector<pollfd> fds;
    for (const Busy& w : workers) fds.push_back({w.child.Descriptor(), POLLIN, 0});
    if (poll(fds.data(), nfds_t(fds.size()), wait) <= 0) continue;
    for (std::size_t i = fds.size(); i-- > 0;) {
      if (fds[i].revents == 0) continue;
      Busy& w = workers[i];
      const bool open = w.child.ReadSome();
      for (std::size_t end; !w.idle && (end = w.child.Output().find(kEnd)) != std::string::npos;) {
        const std::size_t eol = w.child.Output().find('\n', end);
        if (eol == std::string::npos) break;
        int status = 1;
        double seconds = 0;
        std::sscanf(w.child.Output().c_str() + end + 1, "%d %lf", &status, &seconds);
        record(w.index, StatusOf(status, pictures[w.index]), seconds, Notes(w.child.Output().substr(0, end)));
        w.child.Consume(eol + 1);
        w.idle = true;
        feed(w);
      }
      if (open) continue;
      w.child.Finish();
      if (!w.idle) {
        std::string notes = Notes(w.child.Output());
        notes += (notes.empty() ? "" : "; ") + std::string("signal ") + std::to_string(w.child.Signal());
        record(w.index, "crashed", std::chrono::duration<double>(Clock::now() - w.since).count(), notes);
      }
      workers.erase(workers.begin() + std::ptrdiff_t(i));
    }
  }
  PrintTable(outcomes, std::chrono::duration<double>(Clock::now() - begin).count());
  return std::all_of(outcomes.begin(), outcomes.end(), [](const Outcome& o) { return o.status == "ok"; }) ? 0
                                                                                                          : 1;
}

}  // namespace dxfimport
