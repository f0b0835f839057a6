#include "decoders/clementine.h"

#include "base/error.h"
#include "base/file.h"
#include "base/notice.h"
#include "base/text.h"
#include "decoders/external.h"
#include "decoders/jpeg_grey.h"

#include <cstdlib>
#include <memory>

namespace {

constexpr const char *routine = "OalDecodeClementine";
constexpr const char *variable = "LUMACART_CLEMENTINE_DECODER";

// Empty when done, else what went wrong.
std::string decode_by_program(const char *program, const std::string &file_name, int64_t offset, int64_t lines,
                              int64_t samples, uint8_t *out) {
    const DecoderFolder folder;
    if (!folder.is_there())
        return "couldn't make a folder for the decoder's output";
    std::string error = run_external_decoder(
        program, {file_name, std::to_string(offset), std::to_string(lines), std::to_string(samples), folder.file()});
    if (!error.empty())
        return error;
    const FilePtr made = util_open_regular(folder.file().c_str());
    const int64_t wanted = lines * samples;
    const int64_t size = made ? util_file_size(made.get()) : 0;
    if (size != wanted)
        return util_format("the decoder %s made %lld bytes where the image has %lld", program,
                           static_cast<long long>(size), static_cast<long long>(wanted));
    if (fread(out, 1, static_cast<size_t>(wanted), made.get()) != static_cast<size_t>(wanted))
        return util_format("couldn't read what the decoder %s made", program);
    return "";
}

}  // namespace

int OalDecodeClementine(FILE *file, const char *file_name, int64_t lines, int64_t samples, uint8_t *out) {
    std::string error;
    std::string damage;
    if (is_jpeg_stream(file)) {
        error = decode_grey_jpeg(file, lines, samples, out, &damage);
    } else if (const char *program = getenv(variable); program && *program) {
        const std::unique_ptr<char, decltype(&free)> path(realpath(file_name, nullptr), free);
        error = decode_by_program(program, path ? path.get() : file_name, ftello(file), lines, samples, out);
    } else {
        OaReportFailure(520,
                        "%s: %s holds Clementine JPEG (CLEM-JPEG) data that are no ordinary JPEG stream. Set %s to the "
                        "full path of a program that decodes them.",
                        routine, file_name, variable);
        return 1;
    }
    if (!damage.empty())
        util_notice(NoticeKind::Warning,
                    util_format("The JPEG stream in %s is damaged; parts of the image may be wrong: %s", file_name,
                                damage.c_str()));
    if (error.empty())
        return 0;
    OaReportFailure(700, "%s: %s: %s.", routine, file_name, error.c_str());
    return 1;
}
