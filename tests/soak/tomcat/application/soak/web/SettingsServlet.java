package soak.web;

import com.velonix.services.settings.Registration;
import com.velonix.services.settings.Setting;
import com.velonix.services.settings.SettingException;
import com.velonix.services.settings.SettingLevel;
import com.velonix.services.settings.SettingPath;
import com.velonix.services.settings.SettingValidationException;
import jakarta.servlet.ServletException;
import jakarta.servlet.annotation.WebServlet;
import jakarta.servlet.http.HttpServlet;
import jakarta.servlet.http.HttpServletRequest;
import jakarta.servlet.http.HttpServletResponse;
import java.io.IOException;
import java.util.Map;
import java.util.concurrent.ConcurrentHashMap;

/**
 * Sets the number of a request under the client's own key, in the process's tree at the session
 * level and in a tree in memory. Responds with the former number of the process's tree, which an
 * earlier deployment may have set. Throws an exception, which the client receives as status 500, if
 * a setting does not behave as documented. Each client sends one request at a time.
 */
@WebServlet(urlPatterns = "/*", loadOnStartup = 1)
public final class SettingsServlet extends HttpServlet {
    private static final long serialVersionUID = 1;

    private final transient Map<String, Integer> heard = new ConcurrentHashMap<>();
    private transient SettingPath root;
    private transient SettingPath memory;
    private transient SettingPath own;
    private transient Registration registration;

    @Override
    public void init() throws ServletException {
        String node = getServletContext().getContextPath().substring(1);
        root = SettingPath.processRoot();
        memory = SettingPath.standalone();
        own = root.path(node);
        try {
            if (!own.exists())
                root.addNode(node, NotNegative.class, "");
            registration = own.onChanged(event -> heard.merge(event.name(), 1, Integer::sum));
        } catch (SettingException failed) {
            throw new ServletException(failed);
        }
    }

    @Override
    public void destroy() {
        registration.close();
        memory.close();
        root.close();
    }

    @Override
    protected void doGet(HttpServletRequest request, HttpServletResponse response)
            throws ServletException, IOException {
        String key = request.getParameter("key");
        long value = Long.parseLong(request.getParameter("value"));
        try {
            response.getWriter().print(exchange(key, value));
            inMemory(key, value);
        } catch (SettingException failed) {
            throw new ServletException(failed);
        }
    }

    private long exchange(String key, long value) throws SettingException {
        Setting<Long> setting = own.setting(key, Long.class);
        if (!setting.exists())
            own.addKey(key, 0L);
        long before = setting.get();
        int heardBefore = heard.getOrDefault(key, 0);
        setting.set(value, SettingLevel.SESSION);
        check("one change is one event", heard.get(key) == heardBefore + 1);
        try {
            setting.set(-value, SettingLevel.SESSION);
            check("the application's validator refuses", false);
        } catch (SettingValidationException refused) {
            check("the message has the validator's reason",
                    refused.getMessage().contains("negative"));
        }
        check("the value that was set is read", setting.get() == value);
        return before;
    }

    private void inMemory(String key, long value) throws SettingException {
        Setting<Long> setting = memory.setting(key, Long.class);
        if (!setting.exists())
            memory.addKey(key, 0L);
        setting.set(value);
        check("the value that was set in memory is read", setting.get() == value);
    }

    private static void check(String condition, boolean holds) {
        if (!holds)
            throw new IllegalStateException("not so: " + condition);
    }
}
