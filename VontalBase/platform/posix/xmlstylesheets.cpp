#include "VontalBase/platform/posix/xmlstylesheets.h"

#include "VontalBase/platform/gates.h"
#include "VontalBase/platform/posix/comobject.h"
#include "VontalBase/platform/posix/xmldocument.h"
#include "VontalBase/platform/posix/xmlsaving.h"
#include "VontalBase/platform/posix/xmltransform.h"

#include <utility>

namespace qvplatform
{

namespace
{

HRESULT transformToDocument(TransformInput input, DocumentObject & target)
{
    TransformOutput output;
    const HRESULT result = transform(std::move(input), output);
    if (FAILED(result))
        return result;
    Tree * const tree = Tree::make();
    if (tree == nullptr)
        return E_OUTOFMEMORY;
    const HRESULT imported = withoutThrowing([&] { return importDocument(output.document.get(), *tree); });
    if (FAILED(imported))
        tree->release();
    else
        target.adopt(tree);
    return imported;
}

HRESULT transformToStream(TransformInput input, ISequentialStream & target)
{
    TransformOutput output;
    input.wantsBytes = true;
    const HRESULT result = transform(std::move(input), output);
    return FAILED(result) ? result : writeToStream(target, output.bytes);
}

} // namespace

HRESULT transformInto(const NodePlace & place, IXMLDOMNode * stylesheet, const VARIANT & target) noexcept
{
    if (stylesheet == nullptr)
        return E_INVALIDARG;
    return withoutThrowing(
        [&]
        {
            IUnknown * const object = objectIn(target);
            DocumentObject * const document = documentIn(object);
            const qvbase::ReferenceMSCom<ISequentialStream> stream = queryFor<ISequentialStream>(object);
            const NodePlace sheet = placeOf(stylesheet);
            if (sheet.node == nullptr || (document == nullptr && !stream))
                return E_INVALIDARG;
            TransformInput input;
            HRESULT result = exportDocument(sheet.node, input.stylesheet, input.stylesheetFacts);
            if (SUCCEEDED(result))
                result = exportDocument(place.node, input.source, input.sourceFacts);
            if (FAILED(result))
                return result;
            return document != nullptr ? transformToDocument(std::move(input), *document)
                                       : transformToStream(std::move(input), *stream.get());
        });
}

} // namespace qvplatform
