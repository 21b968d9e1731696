#include "vob/notify/ValServer.h"

template class GenericNotifier<NotifierEvent<unsigned>>;
template class GenericNotifier<NotifierEvent<double>>;
template class GenericNotifier<NotifierEvent<bool>>;
template class GenericNotifier<NotifierEvent<Cookie>>;
template class NotifierEx<unsigned>;
template class NotifierEx<double>;
template class NotifierEx<bool>;
template class NotifierEx<Cookie>;
template class ValServer<unsigned>;
template class ValServer<double>;
template class ValServer<bool>;
template class ValServer<Cookie>;
template class ValClient<unsigned>;
template class ValClient<double>;
template class ValClient<bool>;
template class ValClient<Cookie>;
