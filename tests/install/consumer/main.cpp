// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

#include <kestrel/Version.h>
#include <kestrel/kestrel.h>

#include <iostream>

namespace {

void PrintStructure() {
  auto structure = Kestrel::MetaObj::MetaStruct::New("Greeting");
  structure->SetField("Text", "hello");
  structure->SetField("Times", 3);
  std::cout << structure->ToString() << "\n";
}

void PrintRefusal() {
  try {
    Kestrel::MetaObj::MetaStruct::New("not a name");
  } catch (const Kestrel::KestrelException& refusal) {
    std::cout << "refused: " << refusal.what() << "\n";
  }
}

}  // namespace

int main() {
  std::cout << "built against " << KESTREL_VERSION_STRING << "\n";
  PrintStructure();
  PrintRefusal();
}
