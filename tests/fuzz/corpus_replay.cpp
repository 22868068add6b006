// SPDX-License-Identifier: GPL-3.0-or-later
// Runs every file of the fuzz corpus through the fuzz target once, so inputs that once
// crashed the decoder stay fixed in the normal (gcc, sanitizer) test build.
#include <QByteArray>
#include <QDir>
#include <QFile>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s CORPUS_DIR\n", argv[0]);
        return 2;
    }
    const QDir dir(QString::fromLocal8Bit(argv[1]));
    const QStringList files = dir.entryList(QDir::Files, QDir::Name);
    int fed = 0;
    for (const QString &name : files) {
        QFile file(dir.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "cannot read %s\n", qPrintable(file.fileName()));
            return 1;
        }
        const QByteArray bytes = file.readAll();
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.constData()),
                               static_cast<std::size_t>(bytes.size()));
        ++fed;
    }
    std::printf("%d corpus inputs decoded\n", fed);
    return fed > 0 ? 0 : 1; // an empty corpus means the path is wrong
}
