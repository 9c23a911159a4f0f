// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

namespace Kestrel::Testing {

/// A terminal that the test uses as a person would: it types, reads the screen and sends signals.
/// A child process, the work, runs on the terminal in the foreground.
///
/// Another child acts as the shell: it leads the session, notices when the work stops, takes the
/// terminal, and returns it when the work continues. Every wait fails the test after ten seconds.
class PseudoTerminal {
 public:
  /// Makes a terminal of 80 columns and 24 rows.
  PseudoTerminal();
  ~PseudoTerminal();
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  void SetSize(unsigned short columns, unsigned short rows);

  /// Runs `work` in a child whose standard streams are the terminal; its result is the exit status.
  /// May be called once per terminal.
  void Start(const std::function<int()>& work);

  /// Types the text; "\n" is the return key.
  void Type(std::string_view text);

  /// Reads the screen up to `text` and returns everything new on it, including `text`. Lines end
  /// with "\r\n".
  std::string ReadUntil(const std::string& text);

  /// Returns whether the terminal shows what is typed.
  bool IsEchoOn() const;

  /// Turns echo on or off, as a shell does when it takes the terminal.
  void SetEcho(bool isOn);

  /// Sends a signal to the work.
  void Send(int signal);

  /// Waits for a change of the work's status and returns whether the work stopped.
  bool WaitUntilStopped();

  /// Continues the stopped work in the foreground, as a shell's fg does.
  void Continue();

  /// Continues the stopped work in the background, as a shell's bg does.
  void ContinueInBackground();

  /// Waits for the end of the work and returns its status as waitpid does.
  int WaitForEnd();

  /// Returns what is on the screen and has not been read yet.
  std::string ReadRest();

 private:
  [[noreturn]] void Lead(const std::function<int()>& work);
  int WaitForChange();

  int keyboard_;
  int terminal_;
  int changes_ = -1;
  int orders_ = -1;
  pid_t leader_ = -1;
  pid_t work_ = -1;
  std::string screen_;
};

}  // namespace Kestrel::Testing
