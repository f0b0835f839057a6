#include "viewer/model/jpeg2000_source.h"

namespace {

class Jpeg2000Source : public SampleSource {
  public:
    Jpeg2000Source(const ObjDesc *node, int64_t band, OaComponentSize size) : node_(node), band_(band), size_(size) {}

    std::string describe(ImageDescription *description) override {
        if (!open())
            return error_string;
        return describe_image(OaDescribeJpeg2000Band(node_, image_, band_, size_).get(), description);
    }
    OaObjectPtr read_block(const SampleBlock &block) override {
        if (!open())
            return nullptr;
        return OaObjectPtr(OaReadJpeg2000Part(node_, image_, band_, size_, block.first_line, block.last_line,
                                              block.first_sample, block.last_sample));
    }
    std::string value_text(int64_t, int64_t, bool) override { return ""; }
    bool click(int64_t, int64_t) override { return false; }

  private:
    bool open() {
        opened_ = opened_ || OaOpenJpeg2000(node_, &image_) == 0;
        return opened_;
    }

    const ObjDesc *node_;
    int64_t band_;
    OaComponentSize size_;
    Jpeg2000Image image_;
    bool opened_ = false;
};

}  // namespace

std::unique_ptr<SampleSource> jpeg2000_source(const ObjDesc *image, int64_t band, OaComponentSize size) {
    return std::make_unique<Jpeg2000Source>(image, band, size);
}
