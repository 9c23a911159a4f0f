// SPDX-FileCopyrightText: 2026 The Kestrel authors
// SPDX-License-Identifier: Apache-2.0

// Values are built, read and destroyed in several threads at the same time. The tests check the
// results; the thread sanitizer checks that there are no data races (./test tsan).

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "kestrel/KestrelException.h"
#include "kestrel/metaobj/MetaBool.h"
#include "kestrel/metaobj/MetaInt.h"
#include "kestrel/metaobj/MetaList.h"
#include "kestrel/metaobj/MetaString.h"
#include "kestrel/metaobj/MetaStruct.h"

namespace {

using namespace Kestrel::MetaObj;  // NOLINT: the names under test
using Kestrel::KestrelException;
using testing::ThrowsMessage;

using Value = std::shared_ptr<MetaObject>;
using Structure = std::shared_ptr<MetaStruct>;

constexpr int kThreads = 8;

// Runs `work` in `kThreads` threads at the same time, with the number of the thread as the
// argument, and waits until all of them have ended.
void RunInThreads(const std::function<void(int)>& work) {
  std::atomic<int> ready{0};
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&, number] {
      ++ready;
      while (ready < kThreads) {
        std::this_thread::yield();
      }
      work(number);
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

// The functions below make structures. Each of these functions takes a different path through the
// library.

Structure MakeFlat(long seed) {
  const Structure flat = MetaStruct::New("Flat");
  flat->SetField("Name", "name " + std::to_string(seed));
  flat->SetField("Size", 1000 + seed);
  flat->SetField("Enabled", seed % 2 == 0);
  flat->SetField("Path", "/a/path/that/is/too/long/for/a/short/string/" + std::to_string(seed));
  flat->SetField("Count", seed % 25);
  return flat;
}

// Makes a structure of the same shape, with the fields set in another order.
Structure MakeFlatBackwards(long seed) {
  const Structure flat = MetaStruct::New("Flat");
  flat->SetField("Path", "/" + std::to_string(seed));
  flat->SetField("Name", "");
  flat->SetField("Enabled", true);
  flat->SetField("Count", 7);
  flat->SetField("Size", seed);
  return flat;
}

Structure MakeEmpty(long) { return MetaStruct::New("Empty"); }

Structure MakeOfManyFields(std::size_t count, long seed) {
  const Structure many = MetaStruct::New("Many");
  for (std::size_t field = 0; field < count; ++field) {
    many->SetField("field " + std::to_string(field), seed);
  }
  return many;
}

// Makes a structure with more fields than are stored in the structure itself.
Structure MakeWide(long seed) { return MakeOfManyFields(20, seed); }

// Makes a structure with more fields than a layout can have.
Structure MakeTooWide(long seed) { return MakeOfManyFields(70, seed); }

// Makes a structure with a field whose name is too long for a layout.
Structure MakeLongNamed(long seed) {
  const Structure named = MetaStruct::New("Named");
  named->SetField("short", seed);
  named->SetField(std::string(300, 'n'), seed);
  return named;
}

Structure MakeDocumented(long seed) {
  const Structure documented = MetaStruct::New("Documented");
  documented->SetField("a", MetaInt::New(seed), "the first");
  documented->SetField("b", MetaString::New("text"), "the second");
  documented->SetField("a", MetaInt::New(seed + 1), "the first, once more");
  return documented;
}

Structure MakeShrunk(long seed) {
  const Structure shrunk = MakeFlat(seed);
  shrunk->RemoveField("Path");
  shrunk->RemoveField("Count");
  shrunk->SetField("Size", "replaced");
  return shrunk;
}

Structure MakeOfLists(long seed) {
  const Structure lists = MetaStruct::New("Lists");
  lists->SetField("integers", std::vector<long>{-1, 0, 20, seed});
  lists->SetField("texts", std::vector<std::string>{"", "one", std::to_string(seed)});
  lists->SetField("booleans", std::vector<bool>{true, false});
  const auto structures = MetaList::New(MetaType::Struct, MakeFlat(0));
  structures->Add(MakeFlat(seed));
  structures->Add(MakeFlatBackwards(seed));
  lists->SetField("structures", structures);
  return lists;
}

// Makes a structure that is deeper than the depth to which the destructors recurse.
Structure MakeDeep(long seed) {
  Structure deep = MakeFlat(seed);
  for (int level = 0; level < 50; ++level) {
    const Structure outer = MetaStruct::New("Level");
    outer->SetField("inner", deep);
    deep = outer;
  }
  return deep;
}

// Makes a structure of a type whose layouts are made and destroyed again and again.
Structure MakeRare(long seed) {
  const Structure rare = MetaStruct::New("Rare" + std::to_string(seed % 3));
  rare->SetField("a" + std::to_string(seed % 5), seed);
  rare->SetField("b", seed);
  return rare;
}

Structure MakeBound(long seed) {
  const Structure bound = MetaStruct::New(MakeFlat(seed));
  bound->SetField("Name", "bound");
  return bound;
}

using Maker = Structure (*)(long seed);

const std::vector<Maker>& GetMakers() {
  static const std::vector<Maker> makers = {
      MakeFlat,       MakeFlatBackwards, MakeEmpty,   MakeWide, MakeTooWide, MakeLongNamed,
      MakeDocumented, MakeShrunk,        MakeOfLists, MakeDeep, MakeRare,    MakeBound};
  return makers;
}

Structure Copy(const MetaStruct& original) {
  Structure copy = MetaStruct::New(original.GetTypeName());
  for (const std::string& name : original.GetFieldNames()) {
    copy->SetField(name, original.GetField(name), original.GetFieldDocumentation(name));
  }
  return copy;
}

TEST(ValueThreadsTest, EachThreadBuildsComparesCopiesAndDestroysItsOwnValues) {
  constexpr int kRounds = 60;
  RunInThreads([](int number) {
    for (int round = 0; round < kRounds; ++round) {
      for (const Maker make : GetMakers()) {
        const long seed = 100 * number + round;
        const Structure one = make(seed);
        const Structure other = make(seed);
        EXPECT_TRUE(one->IsSameStructure(other, nullptr));
        EXPECT_EQ(one->ToString(), other->ToString());
        EXPECT_EQ(Copy(*one)->ToString(), one->ToString());
      }
    }
  });
}

TEST(ValueThreadsTest, AllThreadsReadTheSameValues) {
  std::vector<Structure> values;
  std::vector<std::string> texts;
  for (const Maker make : GetMakers()) {
    values.push_back(make(5));
    texts.push_back(values.back()->ToString());
  }
  RunInThreads([&](int) {
    for (std::size_t each = 0; each < values.size(); ++each) {
      const Structure value = values[each];
      EXPECT_EQ(value->ToString(), texts[each]);
      EXPECT_TRUE(value->IsSameStructure(GetMakers()[each](5), nullptr));
      EXPECT_EQ(Copy(*value)->ToString(), texts[each]);
      for (const std::string& name : value->GetFieldNames()) {
        EXPECT_EQ(value->GetField(name)->GetType(), value->GetFieldType(name));
      }
    }
  });
}

// Making a structure or a list from a definition locks the definition. All threads may do
// so at the same time.
TEST(ValueThreadsTest, AllThreadsUseOneDefinition) {
  constexpr int kRounds = 50;
  for (int round = 0; round < kRounds; ++round) {
    const Structure definition = MakeFlat(round);
    RunInThreads([&definition](int number) {
      const auto list = MetaList::New(MetaType::Struct, definition);
      const Structure bound = MetaStruct::New(definition);
      bound->SetField("Name", number);
      list->Add(MakeFlat(number));
      EXPECT_THAT([&] { bound->SetField("Other", 1); },
                  ThrowsMessage<KestrelException>(
                      "Unable to set new field Other on structure.  The field does not match the "
                      "Structure definition for this MetaStruct."));
      EXPECT_THROW(list->Add(bound), KestrelException);
      EXPECT_EQ(list->GetCount(), 1u);
    });
    EXPECT_THROW(definition->SetField("Other", 1), KestrelException);
  }
}

// Passes values from a thread that builds them to a thread that destroys them.
class Queue {
 public:
  void Push(std::vector<Value> values) {
    const std::lock_guard<std::mutex> lock(mutex_);
    batches_.push_back(std::move(values));
    changed_.notify_one();
  }

  std::vector<Value> Pop() {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return !batches_.empty(); });
    std::vector<Value> values = std::move(batches_.front());
    batches_.pop_front();
    return values;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::vector<Value>> batches_;
};

TEST(ValueThreadsTest, ValuesMayBeDestroyedInAnotherThreadThanTheOneThatBuiltThem) {
  constexpr int kBatches = 40;
  std::vector<Queue> queues(kThreads);
  RunInThreads([&queues](int number) {
    Queue& next = queues[static_cast<std::size_t>((number + 1) % kThreads)];
    Queue& own = queues[static_cast<std::size_t>(number)];
    for (int batch = 0; batch < kBatches; ++batch) {
      std::vector<Value> values;
      for (const Maker make : GetMakers()) {
        values.push_back(make(batch));
      }
      values.push_back(MetaString::New("a text of its own"));
      next.Push(std::move(values));
      const std::vector<Value> received = own.Pop();
      EXPECT_EQ(received.size(), GetMakers().size() + 1);
      EXPECT_EQ(received.back()->ToString(), "a text of its own");
    }
  });
}

TEST(ValueThreadsTest, AnyThreadMayBeTheLastOwner) {
  constexpr int kRounds = 100;
  std::vector<std::vector<Value>> owners(kThreads);
  for (int round = 0; round < kRounds; ++round) {
    for (const Maker make : GetMakers()) {
      const Value value = make(round);
      for (std::vector<Value>& own : owners) {
        own.push_back(value);
      }
    }
  }
  RunInThreads([&owners](int number) {
    std::vector<Value>& own = owners[static_cast<std::size_t>(number)];
    while (!own.empty()) {
      EXPECT_FALSE(own.back()->ToString().empty());
      own.pop_back();
    }
  });
}

// Values stay valid when the thread that built them has ended.
TEST(ValueThreadsTest, ValuesOutliveTheThreadThatBuiltThem) {
  constexpr int kRounds = 50;
  for (int round = 0; round < kRounds; ++round) {
    std::vector<Value> values;
    std::thread([&values, round] {
      for (const Maker make : GetMakers()) {
        values.push_back(make(round));
      }
    }).join();
    for (std::size_t each = 0; each < values.size(); ++each) {
      EXPECT_EQ(values[each]->ToString(), GetMakers()[each](round)->ToString());
    }
  }
}

// `holder` is older than the thread's first value, so it is destroyed after the memory of the
// thread has gone to the pool that all threads share.
TEST(ValueThreadsTest, AThreadLocalObjectMayHoldValues) {
  RunInThreads([](int number) {
    struct Holder {
      ~Holder() {
        const Structure late = MakeWide(1);
        EXPECT_TRUE(late->IsSameStructure(values.front(), nullptr));
      }
      std::vector<Value> values;
    };
    thread_local Holder holder;
    holder.values = {MakeWide(number), MakeFlat(number)};
  });
}

TEST(ValueThreadsTest, AllThreadsShareTheSmallScalars) {
  RunInThreads([](int) {
    for (int round = 0; round < 1000; ++round) {
      const long number = round % 22 - 1;
      EXPECT_EQ(MetaInt::New(number), MetaInt::New(number));
      EXPECT_EQ(MetaBool::New(round % 2 == 0)->GetValue(), round % 2 == 0);
      EXPECT_EQ(MetaString::New(""), MetaString::New());
    }
  });
}

}  // namespace
