// SPDX-License-Identifier: GPL-3.0-or-later
#include "sensor/JsonWriter.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace {

TEST(JsonWriter, HostileStringsSurviveAJsonParser)
{
    const QString rows[][2] = {
        // written, what a parser must give back
        {QStringLiteral("\"quoted\" \\ back"), QStringLiteral("\"quoted\" \\ back")},
        {QString(QChar(0)) + QStringLiteral("\n\x1f\x7f"),
         QString(QChar(0)) + QStringLiteral("\n\x1f\x7f")},
        {QStringLiteral("</script><img src=x>"), QStringLiteral("</script><img src=x>")},
        // Half a surrogate pair is no character: it becomes the replacement character.
        {QStringLiteral("a") + QChar(0xD800) + QStringLiteral("b"), QStringLiteral("a\uFFFDb")},
    };
    for (const auto &row : rows) {
        JsonWriter w;
        w.beginArray().value(row[0]).endArray();
        const QByteArray json = w.take();
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(json, &error);
        ASSERT_EQ(error.error, QJsonParseError::NoError) << json.toStdString();
        EXPECT_EQ(document.array().at(0).toString(), row[1]) << json.toStdString();
    }
}

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
