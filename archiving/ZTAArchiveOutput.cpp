// SPDX-License-Identifier: MIT

// From the finished tree to bytes, by way of libxml2's serialiser and, where wanted, a gzip stream.

#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLNodesInternal.h>

#include <libxml/xmlsave.h>
#include <zlib.h>

#include <exception>
#include <new>
#include <utility>

namespace zt {

namespace {

/// Where pieces of text go. An exception waits while libxml2 is on the stack.
class Output {
 public:
  Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;
  virtual ~Output() = default;

  virtual void take(std::string_view piece) = 0;
  virtual void finish() {}

  static int write(void* output, const char* bytes, int length) noexcept {
    auto* self = static_cast<Output*>(output);
    if (self->mFailure) return -1;
    self->mTextBytes += static_cast<std::size_t>(length);
    try {
      self->take({bytes, static_cast<std::size_t>(length)});
      return length;
    } catch (...) {
      self->mFailure = std::current_exception();
      return -1;
    }
  }
  void rethrow() const {
    if (mFailure) std::rethrow_exception(mFailure);
  }
  std::size_t textBytes() const { return mTextBytes; }

 private:
  std::exception_ptr mFailure;
  std::size_t mTextBytes = 0;
};

class TextOutput final : public Output {
 public:
  explicit TextOutput(std::string& text) : mText(text) {}
  void take(std::string_view piece) override { mText.append(piece); }

 private:
  std::string& mText;
};

class FileOutput final : public Output {
 public:
  explicit FileOutput(ZTAAtomicFile& file) : mFile(file) {}
  void take(std::string_view piece) override {
    mWaiting.append(piece);
    if (mWaiting.size() >= kBlock) flush();
  }
  void finish() override { flush(); }

 private:
  static constexpr std::size_t kBlock = 1 << 18;
  void flush() {
    mFile.write(mWaiting);
    mWaiting.clear();
  }

  ZTAAtomicFile& mFile;
  std::string mWaiting;
};

/// A gzip stream without time and name, so that equal archives are equal files.
class GzipOutput final : public Output {
 public:
  explicit GzipOutput(Output& next) : mNext(next) {
    if (deflateInit2(&mStream, 6, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK) throw std::bad_alloc();
  }
  ~GzipOutput() override { deflateEnd(&mStream); }

  void take(std::string_view piece) override { run(piece, Z_NO_FLUSH); }
  void finish() override {
    run({}, Z_FINISH);
    mNext.finish();
  }

 private:
  void run(std::string_view piece, int flush) {
    char packed[1 << 14];
    mStream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(piece.data()));
    mStream.avail_in = static_cast<uInt>(piece.size());
    do {
      mStream.next_out = reinterpret_cast<Bytef*>(packed);
      mStream.avail_out = sizeof packed;
      deflate(&mStream, flush);
      mNext.take({packed, sizeof packed - mStream.avail_out});
    } while (mStream.avail_out == 0);
  }

  Output& mNext;
  z_stream mStream = {};
};

/// Answers how many bytes of text there are.
std::size_t serialise(xmlDoc* document, Output& output) {
  // The document names its encoding: naming it here again would send every byte through a converter.
  const xml::QuietErrors quiet;
  xmlSaveCtxt* save = xmlSaveToIO(&Output::write, nullptr, &output, nullptr, XML_SAVE_FORMAT);
  if (save == nullptr) throw std::bad_alloc();
  const long saved = xmlSaveDoc(save, document);
  const int closed = xmlSaveClose(save);
  output.rethrow();
  if (saved < 0 || closed < 0) xml::raise("the archive cannot be turned into text");
  output.finish();
  return output.textBytes();
}

std::size_t serialise(xmlDoc* document, Output& output, ZTACompression compression) {
  if (compression == ZTACompression::none) return serialise(document, output);
  GzipOutput gzip(output);
  return serialise(document, gzip);
}

}  // namespace

std::string ZTAXMLArchiver::bytes(ZTACompression compression) const {
  std::string text;
  TextOutput output(text);
  checkSize(serialise(document(), output, compression));
  return text;
}

void ZTAXMLArchiver::writeToFile(const std::string& path, ZTACompression compression) const {
  ZTAAtomicFile file(path);
  FileOutput output(file);
  checkSize(serialise(document(), output, compression));
  file.commit();
}

}  // namespace zt
