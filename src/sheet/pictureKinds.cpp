#include "sheet/pictureKinds.h"

namespace vignar
{

namespace
{

class IntraKinds final : public PictureKinds
{
public:
    PictureKind kindOf(PictureIndex & /*index*/, const CodedPicture & /*picture*/) override
    {
        return PictureKind::intra;
    }
};

} // namespace

std::unique_ptr<PictureKinds> PictureKinds::of(const StreamCoding &coding)
{
    switch (coding.coding) {
    case PictureCoding::avc:
    case PictureCoding::hevc:
        return unitKinds(coding);
    case PictureCoding::vp8:
    case PictureCoding::vp9:
    case PictureCoding::av1:
        return webKinds(coding);
    case PictureCoding::intraOnly:
        break;
    }
    return std::make_unique<IntraKinds>();
}

} // namespace vignar
