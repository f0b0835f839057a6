#include "viewer/model/label_template.h"

#include <array>

namespace {

constexpr size_t mandatory_columns = 78;

constexpr std::array mandatory = {
    "KRV_VERSION_ID                = KRV3",
    "RECORD_TYPE = FIXED_LENGTH",
    "RECORD_BYTES = 1000",
    "FILE_RECORDS = 806",
    "^IMAGE = (\"XXXXX.IMG\",7)",
    "OBJECT = IMAGE",
    "  LINES = 800",
    "  LINE_SAMPLES = 800",
    "  SAMPLE_BITS = 8",
    "  SAMPLE_TYPE = UNSIGNED_INTEGER",
    "END_OBJECT",
    "END",
};

constexpr std::array notes = {
    "",
    "",
    "",
    "Label Building Notes:",
    "1.  These notes are not meant to replace the KRV Standards Document.",
    "2.  These notes are only meant to aid you in building a minimal label.",
    "3.  Lines ending with asterisks are mandatory and must be completed.",
    "    The asterisks at the end of the mandatory lines mark the correct",
    "    line lengths and need to be replaced with a space before saving the label.",
    "4.  KRV_VERSION_ID specifies that this is a KRV label.",
    "5.  RECORD_TYPE is set to the most likely value for image files.  If you need a",
    "    different value consult the KRV Documentation for accepted values",
    "6.  RECORD_BYTES is set to the number of bytes in a record.  In this sample there",
    "    1000 bytes in each record.",
    "7.  FILE_RECORDS is the number of records in the file.  In this sample there are",
    "    806 records",
    "8.  ^IMAGE will contain the name of the image file, in this sample it is XXXXX.IMG.",
    "    In this sample the image starts at record number 7.  If you wish to put this ",
    "    offset in bytes add <BYTES> after the ), you may place spaces after ",
    "    the ) for legibility.",
    "9.  OBJECT_IMAGE begins the definition of the image definition.",
    "10. LINES defines the number of lines in the image",
    "11. LINE_SAMPLES defines the number of pixels in each line.",
    "12. SAMPLE_BITS defines the number of bits in each pixel",
    "13. SAMPLE_TYPE defines the format of the data.  For a complete list of acceptable",
    "    values for this keyword consult the KRV Documentation.",
    "14  END_OBJECT specifies the end of the image definition.",
    "15. The END keyword defines the end of the label.",
    "16. Before saving the label remove all lines following the END and replace the asterisks",
    "    at the end of the lines with a space.",
    "17. There are many other keywords besides the ones presented here.  These keywords will",
    "    allow the display of many raw image files.  Others may be found in",
    "    KORVELAN STANDARDS REFERENCE MANUAL",
};

}  // namespace

std::vector<std::string> label_template() {
    std::vector<std::string> lines(mandatory.begin(), mandatory.end());
    for (std::string &line : lines) {
        line.resize(mandatory_columns, ' ');
        line += '*';
    }
    lines.insert(lines.end(), notes.begin(), notes.end());
    return lines;
}
