#include "objectmodel/comment.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"

namespace {

using namespace MsExcel;
using namespace kestrolumen::detail;
using Id = Dispid::Comment;

class XComment14 final : public Comment {
  public:
    explicit XComment14(ComPtr<IDispatch> source) noexcept : dispatch(std::move(source)) {}

    bool IsNull() const noexcept override { return !dispatch; }
    void Delete() override { doN(dispatch, Id::Delete); }
    CStringW Text(VARIANT text, VARIANT start, VARIANT overwrite) override {
        return doS(dispatch, Id::Text, Optional(Take(text)), Optional(Take(start)),
                   Optional(Take(overwrite)));
    }
    bool GetVisible() const override { return getB(dispatch, Id::Visible); }
    void PutVisible(bool visible) override { putB(dispatch, Id::Visible, visible); }
    float GetWidth() const override {
        return Ask<float>(DISPATCH_PROPERTYGET, VT_R4, getI(dispatch, Id::Shape).get(), Dispid::Shape::Width);
    }
    void PutWidth(float width) override {
        putV(getI(dispatch, Id::Shape).get(), Dispid::Shape::Width, width);
    }

  private:
    ComPtr<IDispatch> dispatch;
};

}  // namespace

template <>
std::shared_ptr<Comment> kestrolumen::detail::Wrap(InterfaceSource<IDispatch> source) {
    return MakePooled<XComment14>(source);
}
