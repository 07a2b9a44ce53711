// Shared by the client's home page and gallery: the connection to the client
// application (its "qtui" object over Qt WebChannel), the demo account kept
// in the browser's storage, the login card, and small helpers. Outside the
// client (a plain browser) everything works except the calls into it.
(function () {
  "use strict";

  var USER_KEY = "melo.user";
  var DEMO_BALANCE = "12";
  var app = null;
  var readyQueue = [];
  var ready = false;
  var userListeners = [];

  function whenReady(callback) {
    if (ready) callback(app);
    else readyQueue.push(callback);
  }

  function markReady() {
    ready = true;
    readyQueue.splice(0).forEach(function (callback) { callback(app); });
  }

  function connect() {
    if (typeof qt === "undefined" || !qt.webChannelTransport || typeof QWebChannel === "undefined") {
      markReady();
      return;
    }
    new QWebChannel(qt.webChannelTransport, function (channel) {
      app = channel.objects.qtui || null;
      window.qtui = app;
      markReady();
    });
  }

  // Calls a function of the client; outside it, says so and returns false.
  function call(name) {
    var args = Array.prototype.slice.call(arguments, 1);
    if (!app || typeof app[name] !== "function") {
      toast("请在 MELO 客户端中使用此功能");
      return false;
    }
    app[name].apply(app, args);
    return true;
  }

  // ---- Account ---------------------------------------------------------

  function currentUser() {
    try {
      var user = JSON.parse(localStorage.getItem(USER_KEY) || "null");
      return user && typeof user.name === "string" && user.name ? user : null;
    } catch (e) {
      return null;
    }
  }

  // A stable demo id from the name, 10000 to 99999.
  function demoId(name) {
    var hash = 0;
    for (var i = 0; i < name.length; ++i) hash = (hash * 31 + name.charCodeAt(i)) % 90000;
    return String(10000 + hash);
  }

  function avatarUrl() {
    return location.origin + "/avatar.jpg";
  }

  // Tells the client who is logged in; four empty texts mean nobody.
  function reportUser() {
    var user = currentUser();
    whenReady(function () {
      if (!app) return;
      if (user) app.recieveJsMessageUser(avatarUrl(), user.name, user.balance, user.id);
      else app.recieveJsMessageUser("", "", "", "");
    });
  }

  function notifyUser() {
    var user = currentUser();
    document.body.dataset.login = user ? "in" : "out";
    userListeners.forEach(function (listener) { listener(user); });
  }

  function login(name) {
    var user = { name: name, id: demoId(name), balance: DEMO_BALANCE };
    localStorage.setItem(USER_KEY, JSON.stringify(user));
    closeLogin();
    notifyUser();
    reportUser();
    toast("欢迎回来，" + name);
  }

  // fromPage: the user pressed log-out in a page, so the client reloads both
  // pages; from the client ("toLogout()") it has already switched itself.
  function logout(fromPage) {
    localStorage.removeItem(USER_KEY);
    notifyUser();
    reportUser();
    if (fromPage) whenReady(function () { if (app) app.recieveJsToLogout(true); });
  }

  // ---- Login card --------------------------------------------------------

  var loginLayer = null;

  function buildLogin() {
    loginLayer = document.createElement("div");
    loginLayer.className = "modal-layer";
    loginLayer.id = "loginLayer";
    loginLayer.innerHTML =
      '<form class="modal login-card" id="loginForm" autocomplete="off">' +
      '<button type="button" class="modal-close" aria-label="关闭">×</button>' +
      '<div class="login-brand"><span class="logo-mark">M</span>登录 MELO</div>' +
      '<p class="login-hint">登录后，客户端标题栏显示账户与修图卷余额</p>' +
      '<label>用户名<input id="loginName" name="name" maxlength="32" placeholder="请输入用户名"></label>' +
      '<label>密码<input id="loginPassword" name="password" type="password" maxlength="64" placeholder="演示环境，任意密码即可"></label>' +
      '<p class="form-error" id="loginError"></p>' +
      '<button type="submit" class="btn btn-primary btn-block" id="loginSubmit">登录</button>' +
      '<button type="button" class="btn btn-ghost btn-block" id="loginDemo">体验账号一键登录</button>' +
      '<p class="login-foot">还没有账号？登录即自动注册</p>' +
      "</form>";
    document.body.appendChild(loginLayer);
    var form = loginLayer.querySelector("#loginForm");
    form.addEventListener("submit", function (event) {
      event.preventDefault();
      var name = form.name.value.trim();
      var error = loginLayer.querySelector("#loginError");
      if (!name) error.textContent = "请输入用户名";
      else if (!form.password.value) error.textContent = "请输入密码";
      else login(name);
    });
    loginLayer.querySelector("#loginDemo").addEventListener("click", function () { login("体验用户"); });
    loginLayer.querySelector(".modal-close").addEventListener("click", closeLogin);
    loginLayer.addEventListener("click", function (event) { if (event.target === loginLayer) closeLogin(); });
  }

  function openLogin() {
    if (currentUser()) return;
    if (!loginLayer) buildLogin();
    loginLayer.querySelector("#loginError").textContent = "";
    loginLayer.classList.add("open");
    loginLayer.querySelector("#loginName").focus();
  }

  function closeLogin() {
    if (loginLayer) loginLayer.classList.remove("open");
  }

  // ---- Helpers -----------------------------------------------------------

  var toastTimer = 0;
  function toast(text) {
    var box = document.getElementById("toast");
    if (!box) {
      box = document.createElement("div");
      box.id = "toast";
      document.body.appendChild(box);
    }
    box.textContent = text;
    box.classList.add("show");
    clearTimeout(toastTimer);
    toastTimer = setTimeout(function () { box.classList.remove("show"); }, 2400);
  }

  // Gallery names carry the scene word before the first "_".
  function describePicture(picture) {
    var cut = picture.name.indexOf("_");
    var base = picture.name.replace(/\.[^.]*$/, "");
    return {
      name: picture.name,
      url: new URL(picture.url, location.origin).href,
      scene: cut > 0 ? picture.name.slice(0, cut) : "其他",
      title: cut > 0 ? base.slice(cut + 1).replace(/_/g, " ") : base
    };
  }

  function loadPictures() {
    return fetch("/gallery/index.json")
      .then(function (answer) { return answer.json(); })
      .then(function (index) { return (index.data && index.data.pictures || []).map(describePicture); });
  }

  // Fills the account areas marked data-account in a page.
  function renderAccount(root, user) {
    root.querySelectorAll("[data-user-name]").forEach(function (node) { node.textContent = user ? user.name : ""; });
    root.querySelectorAll("[data-user-balance]").forEach(function (node) { node.textContent = user ? user.balance : "0"; });
    root.querySelectorAll("[data-user-id]").forEach(function (node) { node.textContent = user ? user.id : ""; });
    root.querySelectorAll("[data-user-avatar]").forEach(function (node) { node.src = user ? avatarUrl() : ""; });
  }

  window.addEventListener("storage", function (event) {
    if (event.key === USER_KEY || event.key === null) {
      if (currentUser()) closeLogin();
      notifyUser();
    }
  });

  document.addEventListener("keydown", function (event) { if (event.key === "Escape") closeLogin(); });

  document.addEventListener("click", function (event) {
    var target = event.target.closest("[data-action]");
    if (!target) return;
    var action = target.dataset.action;
    if (action === "login") openLogin();
    else if (action === "logout") logout(true);
    else if (action === "jump") {
      event.preventDefault();
      var address = new URL(target.getAttribute("href"), location.href).href;
      if (!app) window.open(address, "_blank");
      else call("recieveJsToJumpUrl", address);
    }
  });

  window.Melo = {
    whenReady: whenReady,
    call: call,
    inClient: function () { return !!app; },
    currentUser: currentUser,
    reportUser: reportUser,
    onUser: function (listener) { userListeners.push(listener); listener(currentUser()); },
    renderAccount: renderAccount,
    loadPictures: loadPictures,
    openLogin: openLogin,
    logout: logout,
    toast: toast
  };

  // The scripts the client runs in the pages.
  window.toLogin = openLogin;
  window.toLogout = function () { logout(false); };

  document.addEventListener("DOMContentLoaded", function () {
    notifyUser();
    connect();
  });
})();
