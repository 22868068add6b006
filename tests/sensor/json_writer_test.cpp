// SPDX-License-Identifier: GPL-3.0-or-later
#include "sensor/JsonWriter.h"

#include <gtest/gtest.h>

namespace {

// Hostile strings are checked through the documents that carry them (documents_test).
TEST(JsonWriter, NumbersAndStructure)
{
    JsonWriter w;
    w.beginObject();
    w.key("a").value(qint64(-9007199254740991));
    w.key("b").value(0.4339622557163239);
    w.key("e").value(std::nan(""));
    w.key("f").beginArray().value(true).null().value(std::optional<QString>()).endArray();
    w.key("g").beginObject().endObject();
    w.key("h").value(1e15);
    w.endObject();
    EXPECT_EQ(w.take(), "{\"a\":-9007199254740991,\"b\":0.433962,\"e\":null,"
                        "\"f\":[true,null,null],\"g\":{},\"h\":1e+15}");
}

} // namespace
