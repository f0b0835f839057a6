#include "decoders/moc.h"

#include "base/error.h"
#include "base/file.h"
#include "base/text.h"
#include "decoders/external.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace {

constexpr const char *routine = "OalDecompressMoc";
constexpr const char *variable = "LUMACART_MOC_DECODER";

// A file that was not there before; removed unless it is kept.
class NewFile {
  public:
    explicit NewFile(const char *name) : name_(name) {
        const int descriptor = open(name, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        file_.reset(descriptor < 0 ? nullptr : fdopen(descriptor, "wb"));
    }
    ~NewFile() {
        if (file_)
            unlink(name_);
    }
    NewFile(const NewFile &) = delete;
    NewFile &operator=(const NewFile &) = delete;

    FILE *stream() const { return file_.get(); }
    // False, and the file is removed, when not all could be written.
    bool keep() {
        if (fclose(file_.release()) == 0)
            return true;
        unlink(name_);
        return false;
    }

  private:
    const char *name_;
    FilePtr file_;
};

bool copy_all(FILE *from, FILE *to) {
    char bytes[1 << 16];
    while (const size_t count = fread(bytes, 1, sizeof bytes, from))
        if (fwrite(bytes, 1, count, to) != count)
            return false;
    return ferror(from) == 0;
}

// Empty when done, else what went wrong. The decoder never writes where others can.
std::string decompress(const char *program, const char *input_name, const char *output_name) {
    const std::unique_ptr<char, decltype(&free)> input(realpath(input_name, nullptr), free);
    if (!input || !util_open_regular(input.get()))
        return util_format("couldn't open %s", input_name);
    NewFile output(output_name);
    if (!output.stream())
        return util_format("couldn't create %s: %s", output_name, strerror(errno));
    const DecoderFolder folder;
    if (!folder.is_there())
        return "couldn't make a folder for the decoder's output";
    std::string error = run_external_decoder(program, {input.get(), folder.file()});
    if (!error.empty())
        return error;
    const FilePtr made = util_open_regular(folder.file().c_str());
    if (!made || util_file_size(made.get()) < 1)
        return util_format("the decoder %s made no file", program);
    if (!copy_all(made.get(), output.stream()) || !output.keep())
        return util_format("couldn't write %s", output_name);
    return "";
}

}  // namespace

int OalDecompressMoc(const char *input_name, const char *output_name) {
    const char *program = getenv(variable);
    if (!program || !*program) {
        OaReportFailure(520,
                        "%s: %s is a compressed MOC product. Set %s to the full path of a program that decompresses "
                        "such products.",
                        routine, input_name, variable);
        return 1;
    }
    const std::string error = decompress(program, input_name, output_name);
    if (error.empty())
        return 0;
    OaReportFailure(700, "%s: %s.", routine, error.c_str());
    return 1;
}
